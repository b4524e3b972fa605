// Putting a text together from pieces.
#pragma once

#include <charconv>
#include <vkmibh/base.h>

namespace VLK {

// Collects pieces and hands them to the string in larger ones. Without memory
// the string ends up empty: a text with a hole in it would be another value's.
class CTextWriter {
public:
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
        const unsigned before = m_out.length();
        m_failed = m_failed || m_out.Append(m_buffer, m_used).length() != before + m_used;
        m_used = 0;
    }

    BString& m_out;
    char m_buffer[256];
    unsigned m_used = 0;
    bool m_failed = false;
};

} // namespace VLK
