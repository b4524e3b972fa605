// SNMP messages made and read by hand, byte by byte.
#pragma once

#include <string>
#include <vector>

namespace ber {

using Bytes = std::string;
using Oid = std::vector<unsigned>;

inline Bytes Length(size_t length)
{
    if (length < 128)
        return Bytes(1, static_cast<char>(length));
    Bytes digits;
    for (; length; length >>= 8)
        digits.insert(digits.begin(), static_cast<char>(length & 0xff));
    return Bytes(1, static_cast<char>(0x80 | digits.size())) + digits;
}

inline Bytes Tlv(int tag, const Bytes& content)
{
    return Bytes(1, static_cast<char>(tag)) + Length(content.size()) + content;
}

inline Bytes Integer(int value)
{
    Bytes content;
    for (int shift = 24; shift >= 0; shift -= 8)
        content += static_cast<char>(value >> shift);
    return Tlv(2, content);
}

inline Bytes ObjectId(const Oid& arcs)
{
    Bytes content(1, static_cast<char>(40 * arcs[0] + arcs[1]));
    for (size_t i = 2; i < arcs.size(); ++i) {
        Bytes arc(1, static_cast<char>(arcs[i] & 0x7f));
        for (unsigned rest = arcs[i] >> 7; rest; rest >>= 7)
            arc.insert(arc.begin(), static_cast<char>(0x80 | (rest & 0x7f)));
        content += arc;
    }
    return Tlv(6, content);
}

inline Bytes Binding(const Oid& name, const Bytes& value = Tlv(5, ""))
{
    return Tlv(0x30, ObjectId(name) + value);
}

// version 0 is SNMPv1, 1 SNMPv2c; `first` and `second` are error status and
// index, or non-repeaters and max-repetitions.
inline Bytes Message(int version, const Bytes& community, int pduType, int requestId, int first,
                     int second, const Bytes& bindings)
{
    Bytes pdu = Integer(requestId) + Integer(first) + Integer(second) + Tlv(0x30, bindings);
    return Tlv(0x30, Integer(version) + Tlv(4, community) + Tlv(pduType, pdu));
}

// Reads one element after the other; `ok` turns false at the first that does
// not fit.
class Reader {
public:
    explicit Reader(Bytes bytes) : m_bytes(std::move(bytes)) {}
    bool AtEnd() const { return m_at == m_bytes.size(); }
    bool Ok() const { return m_ok; }
    int Tag() const { return m_at < m_bytes.size() ? Byte(m_at) : -1; }

    Bytes Element()
    {
        size_t at = m_at + 1;
        if (at >= m_bytes.size())
            return Fail();
        size_t length = static_cast<size_t>(Byte(at++));
        if (length & 0x80) {
            size_t digits = length & 0x7f;
            length = 0;
            for (; digits && at < m_bytes.size(); --digits)
                length = length << 8 | static_cast<size_t>(Byte(at++));
        }
        if (length > m_bytes.size() - at)
            return Fail();
        m_at = at + length;
        return m_bytes.substr(at, length);
    }

    int Number()
    {
        Bytes content = Element();
        int value = !content.empty() && (content[0] & 0x80) ? -1 : 0;
        for (char c : content)
            value =
                static_cast<int>(static_cast<unsigned>(value) << 8 | static_cast<unsigned char>(c));
        return value;
    }

private:
    int Byte(size_t at) const { return static_cast<unsigned char>(m_bytes[at]); }
    Bytes Fail()
    {
        m_ok = false;
        m_at = m_bytes.size();
        return "";
    }

    Bytes m_bytes;
    size_t m_at = 0;
    bool m_ok = true;
};

struct Reply {
    bool ok = false;
    int version = -1;
    Bytes community;
    int pduType = -1;
    int requestId = 0;
    int status = -1;
    int index = -1;
    Bytes bindings; // as encoded
    std::vector<Bytes> names;
    std::vector<int> tags;
    std::vector<Bytes> values;
};

inline Reply ReadReply(const Bytes& datagram)
{
    Reply reply;
    Reader outer(datagram);
    Reader message(outer.Element());
    reply.version = message.Number();
    reply.community = message.Element();
    reply.pduType = message.Tag();
    Reader pdu(message.Element());
    reply.requestId = pdu.Number();
    reply.status = pdu.Number();
    reply.index = pdu.Number();
    reply.bindings = pdu.Element();
    Reader list(reply.bindings);
    while (!list.AtEnd()) {
        Reader binding(list.Element());
        reply.names.push_back(binding.Element());
        reply.tags.push_back(binding.Tag());
        reply.values.push_back(binding.Element());
    }
    reply.ok = outer.Ok() && message.Ok() && pdu.Ok() && list.Ok() && !datagram.empty();
    return reply;
}

// The content bytes of an OID, as `names` has them.
inline Bytes Name(const Oid& arcs) { return Reader(ObjectId(arcs)).Element(); }

} // namespace ber
