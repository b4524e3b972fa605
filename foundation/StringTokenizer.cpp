#include <cstring>
#include <vkmibh/base.h>

namespace VLK {

BStringTokenizer::BStringTokenizer(const char* text, const char* delimiters, bool returnDelimiters)
    : m_text(text), m_delimiters(delimiters), m_returnDelimiters(returnDelimiters), m_offset(0)
{
    if (m_delimiters.length() != VKStrlen(delimiters))
        m_text.clear(); // no memory for the delimiters: rather no tokens than wrong ones
}

bool BStringTokenizer::HasMoreTokens() const
{
    return (m_returnDelimiters ? m_offset : SkipDelimiters()) < m_text.length();
}

BString BStringTokenizer::NextToken()
{
    const unsigned start = m_returnDelimiters ? m_offset : SkipDelimiters();
    unsigned end = start;
    if (m_returnDelimiters && end < m_text.length() && IsDelimiter(end)) {
        ++end;
    } else {
        while (end < m_text.length() && !IsDelimiter(end))
            ++end;
    }
    m_offset = end;
    return BString(m_text.c_str() + start, end - start);
}

bool BStringTokenizer::IsDelimiter(unsigned offset) const
{
    return std::memchr(m_delimiters.c_str(), m_text[offset], m_delimiters.length()) != nullptr;
}

unsigned BStringTokenizer::SkipDelimiters() const
{
    unsigned offset = m_offset;
    while (offset < m_text.length() && IsDelimiter(offset))
        ++offset;
    return offset;
}

} // namespace VLK
