// Taking the texts of /proc apart, without a copy.
#pragma once

#include <algorithm>
#include <charconv>
#include <string_view>

namespace VLK::modules {

// What is left of a text; each call takes something off its front, or says false.
//
// Ownership: a view of the text.
// Threads:   a plain record.
// Errors:    false = there is none; what is left then is not defined.
// Contract:  allocates nothing.
class CProcText {
public:
    explicit CProcText(std::string_view text) : m_rest(text) {}

    std::string_view Rest() const { return m_rest; }

    bool TakeLine(std::string_view& line)
    {
        if (m_rest.empty())
            return false;
        line = m_rest.substr(0, m_rest.find('\n'));
        m_rest.remove_prefix(std::min(line.size() + 1, m_rest.size()));
        return true;
    }

    // Up to the next blank.
    bool TakeWord(std::string_view& word)
    {
        SkipBlanks();
        word = m_rest.substr(0, m_rest.find_first_of(kBlanks));
        m_rest.remove_prefix(word.size());
        return !word.empty();
    }

    // A decimal number that fits, blanks before it passed over.
    template <class Number>
    bool TakeNumber(Number& number)
    {
        SkipBlanks();
        const char* const end = m_rest.data() + m_rest.size();
        const auto [stop, error] = std::from_chars(m_rest.data(), end, number);
        m_rest.remove_prefix(static_cast<size_t>(stop - m_rest.data()));
        return error == std::errc();
    }

    bool Take(char c)
    {
        const bool isNext = !m_rest.empty() && m_rest[0] == c;
        m_rest.remove_prefix(isNext);
        return isNext;
    }

    bool Take(std::string_view start)
    {
        const bool isNext = m_rest.substr(0, start.size()) == start;
        m_rest.remove_prefix(isNext ? start.size() : 0);
        return isNext;
    }

    void SkipBlanks()
    {
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(kBlanks), m_rest.size()));
    }

private:
    static constexpr std::string_view kBlanks = " \t\n";

    std::string_view m_rest;
};

} // namespace VLK::modules
