// What a message says, by the letter of RFC 1157, RFC 3416 and RFC 3412: written for
// the tests, without a look at how the agent reads.
#pragma once

#include "Ber.h"

#include <optional>

namespace strict {

struct Message {
    int version = -1;
    ber::Bytes name; // community or user
    int flags = 0;   // of SNMPv3
    int pduType = -1;
    int requestId = 0;
};

struct Element {
    int tag = -1;
    ber::Bytes content;
};

// A cursor that throws where a byte is missing or too many.
class Cursor {
public:
    struct Malformed {};

    explicit Cursor(const ber::Bytes& bytes) : m_bytes(bytes) {}
    bool AtEnd() const { return m_at == m_bytes.size(); }
    void End() const { Require(AtEnd()); }
    static void Require(bool condition)
    {
        if (!condition)
            throw Malformed();
    }

    Element Next()
    {
        Element element;
        element.tag = Octet();
        Require((element.tag & 0x1f) != 0x1f);
        size_t length = static_cast<size_t>(Octet());
        Require(length != 0x80 && length <= 0x80 + 4);
        if (length > 0x80) {
            size_t digits = length - 0x80;
            for (length = 0; digits > 0; --digits)
                length = length * 256 + static_cast<size_t>(Octet());
        }
        Require(length <= m_bytes.size() - m_at);
        element.content = m_bytes.substr(m_at, length);
        m_at += length;
        return element;
    }
    ber::Bytes Next(int tag)
    {
        Element element = Next();
        Require(element.tag == tag);
        return element.content;
    }
    int Number()
    {
        const ber::Bytes content = Next(2);
        Require(!content.empty() && content.size() <= 8);
        long long value = (content[0] & 0x80) != 0 ? -1 : 0;
        for (const char octet : content)
            value = value * 256 + static_cast<unsigned char>(octet);
        Require(value >= -2147483648LL && value <= 4294967295LL);
        return static_cast<int>(value);
    }

private:
    int Octet()
    {
        Require(m_at < m_bytes.size());
        return static_cast<unsigned char>(m_bytes[m_at++]);
    }

    ber::Bytes m_bytes;
    size_t m_at = 0;
};

inline void ReadObjectId(const ber::Bytes& content)
{
    unsigned long long arc = 0;
    int arcs = 1;
    for (unsigned char octet : content) {
        arc = arc * 128 + (octet & 0x7f);
        Cursor::Require(arc <= 4294967295ULL);
        if (octet & 0x80)
            continue;
        arc = 0;
        ++arcs;
    }
    Cursor::Require(arcs <= 128 && (content.empty() || !(content.back() & 0x80)));
}

inline void ReadBindings(const ber::Bytes& list)
{
    Cursor bindings(list);
    while (!bindings.AtEnd()) {
        Cursor binding(bindings.Next(0x30));
        ReadObjectId(binding.Next(6));
        const Element value = binding.Next();
        if (value.tag == 6)
            ReadObjectId(value.content);
        binding.End();
    }
}

inline void ReadTrap(Cursor& content)
{
    ReadObjectId(content.Next(6));
    content.Next(0x40);
    content.Number();
    content.Number();
    content.Next(0x43);
    content.Next(0x30);
    content.End();
}

inline void ReadPdu(const Element& pdu, Message& message)
{
    message.pduType = pdu.tag;
    Cursor::Require(pdu.tag >= 0xa0 && pdu.tag <= 0xa8);
    Cursor content(pdu.content);
    if (pdu.tag == 0xa4) // of SNMPv1, and without an id
        return ReadTrap(content);
    message.requestId = content.Number();
    content.Number();
    content.Number();
    ReadBindings(content.Next(0x30));
    content.End();
}

// RFC 3414 section 2.4; the user.
inline ber::Bytes ReadUsm(const ber::Bytes& security)
{
    Cursor outer(security);
    Cursor usm(outer.Next(0x30));
    outer.End();
    usm.Next(4);
    usm.Number();
    usm.Number();
    ber::Bytes user = usm.Next(4);
    usm.Next(4);
    usm.Next(4);
    usm.End();
    return user;
}

inline void ReadV3(Cursor& parts, Message& message)
{
    Cursor global(parts.Next(0x30));
    message.requestId = global.Number();
    global.Number();
    const ber::Bytes flags = global.Next(4);
    Cursor::Require(flags.size() == 1);
    message.flags = static_cast<unsigned char>(flags[0]);
    const bool isUsm = global.Number() == 3;
    global.End();
    const ber::Bytes security = parts.Next(4);
    const Element scoped = parts.Next();
    parts.End();
    if (isUsm)
        message.name = ReadUsm(security);
    if (message.flags & 2)
        return Cursor::Require(scoped.tag == 4);
    Cursor::Require(scoped.tag == 0x30);
    Cursor pdu(scoped.content);
    pdu.Next(4);
    pdu.Next(4);
    ReadPdu(pdu.Next(), message);
    pdu.End();
}

// Nothing when it is malformed.
inline std::optional<Message> Read(const ber::Bytes& datagram)
{
    try {
        Cursor whole(datagram);
        Cursor parts(whole.Next(0x30));
        whole.End();
        Message message;
        message.version = parts.Number();
        if (message.version == 3) {
            ReadV3(parts, message);
            return message;
        }
        Cursor::Require(message.version == 0 || message.version == 1);
        message.name = parts.Next(4);
        ReadPdu(parts.Next(), message);
        parts.End();
        return message;
    } catch (const Cursor::Malformed&) {
        return std::nullopt;
    }
}

} // namespace strict
