// Object identifier: dotted decimal text.
#include <vkmibh/values.h>

#include <cstring>

#include "foundation/TextWriter.h"

namespace VLK {

namespace {

constexpr unsigned kMaxComponentDigits = 10;

inline bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// CONTRACT: at most ten digits, and their value modulo 2^32: 4294967296 is 0.
// The length is the only bound that callers meet.
bool ParseComponent(const char* begin, const char* end, unsigned& value)
{
    if (begin == end || end - begin > static_cast<std::ptrdiff_t>(kMaxComponentDigits))
        return false;
    value = 0;
    for (; begin != end; ++begin) {
        if (*begin < '0' || *begin > '9')
            return false;
        value = value * 10 + static_cast<unsigned>(*begin - '0');
    }
    return true;
}

bool ParseDotted(const char* text, const char* end, BObjectIdentifier& oid)
{
    while (text != end && IsBlank(*text))
        ++text;
    if (text == end)
        return false;
    // CONTRACT: one leading dot is no component: .1.3.6 is 1.3.6.
    if (*text == '.')
        ++text;
    bool stored = true;
    // CONTRACT: a dot that ends the text ends it well: 1.3. is 1.3.
    while (text != end) {
        const char* dot = static_cast<const char*>(std::memchr(text, '.', end - text));
        const char* stop = dot ? dot : end;
        if (!dot) {
            while (stop != text && IsBlank(stop[-1]))
                --stop;
        }
        unsigned value;
        if (!ParseComponent(text, stop, value))
            return false;
        if (!oid.Append(value))
            stored = false;
        text = dot ? dot + 1 : end;
    }
    return stored;
}

} // namespace

bool BObjectIdentifier::AssignFromDottedDecimalStr(const BString& text)
{
    *this = BObjectIdentifier();
    const char* begin = text.c_str();
    if (ParseDotted(begin, begin + text.length(), *this))
        return true;
    *this = BObjectIdentifier();
    return false;
}

void BObjectIdentifier::ToString(BString& out) const
{
    CTextWriter text(out);
    for (unsigned i = 0; i < Length(); ++i) {
        if (i > 0)
            text.Put('.');
        text.PutNumber(m_arcs[i]);
    }
}

BString BObjectIdentifier::ToString() const
{
    BString text;
    ToString(text);
    return text;
}

} // namespace VLK
