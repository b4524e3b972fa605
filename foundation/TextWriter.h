// Putting a text together from pieces.
#pragma once

#include <charconv>
#include <cstring>
#include <vkmibh/base.h>

namespace VLK {

// Collects pieces and hands them to the string in larger ones. Without memory
// the string ends up empty: a text with a hole in it would be another value's.
class CTextWriter {
public:
    // The buffer is room, written before it is read.
    // cppcheck-suppress uninitMemberVar
    explicit CTextWriter(BString& out) : m_out(out) { out.clear(); }
    ~CTextWriter()
    {
        Flush();
        if (m_failed)
            m_out.clear();
    }
    CTextWriter(const CTextWriter&) = delete;
    CTextWriter& operator=(const CTextWriter&) = delete;

    void Put(char c)
    {
        MakeRoom(1);
        m_buffer[m_used++] = c;
    }

    // A null text has no characters.
    void Put(const char* text, unsigned length)
    {
        if (!text)
            return;
        MakeRoom(length);
        if (length > sizeof m_buffer) {
            Append(text, length);
            return;
        }
        std::memcpy(m_buffer + m_used, text, length);
        m_used += length;
    }
    void Put(const char* text) { Put(text, VKStrlen(text)); }
    void Put(const BString& text) { Put(text.data(), text.length()); }

    // Decimal.
    template <class Number>
    void PutNumber(Number number)
    {
        MakeRoom(kMaxNumber);
        const auto end = std::to_chars(m_buffer + m_used, m_buffer + sizeof m_buffer, number).ptr;
        m_used = static_cast<unsigned>(end - m_buffer);
    }

private:
    static constexpr unsigned kMaxNumber = sizeof "-9223372036854775808" - 1;

    void MakeRoom(unsigned count)
    {
        if (sizeof m_buffer - m_used < count)
            Flush();
    }

    void Flush()
    {
        Append(m_buffer, m_used);
        m_used = 0;
    }

    void Append(const char* text, unsigned length)
    {
        const unsigned before = m_out.length();
        m_failed = m_failed || m_out.Append(text, length).length() != before + length;
    }

    BString& m_out;
    char m_buffer[256];
    unsigned m_used = 0;
    bool m_failed = false;
};

} // namespace VLK
