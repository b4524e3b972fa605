#include "host/wire/PlainMessage.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vkmibh/handler.h>

namespace VLK::host {

namespace {

constexpr unsigned kMostArcs = 128;
constexpr size_t kLongestArc = 5; // octets
constexpr size_t kShortestBinding = 7;
constexpr size_t kLongestCommunity = 255;
constexpr unsigned kSequence = 0x30;
constexpr unsigned kResponse = 0xa2;

// Takes elements one after the other. One that is not as it has to be ends it: what is
// asked of it then is empty, and IsBroken() tells.
class CReader {
public:
    CReader(const unsigned char* begin, const unsigned char* end) : m_at(begin), m_end(end) {}

    bool IsBroken() const { return m_isBroken; }
    bool IsAtEnd() const { return m_at == m_end; }
    const unsigned char* At() const { return m_at; }
    size_t Left() const { return static_cast<size_t>(m_end - m_at); }
    unsigned Tag() const { return IsAtEnd() ? 0 : *m_at; }

    // What is in the next element. Where answers may repeat it, lengths and numbers have to
    // be in their shortest form, which is how they are sent.
    CReader Enter(unsigned tag, bool isShortest)
    {
        size_t length = 0;
        if (Left() < 2 || *m_at != tag || !ReadLength(isShortest, length))
            return Break();
        const unsigned char* content = m_at;
        m_at += length;
        return CReader(content, m_at);
    }

    // A signed number of 32 bits.
    int Integer(bool isShortest)
    {
        const CReader content = Enter(eAsnInteger, isShortest);
        const unsigned char* at = content.m_at;
        const size_t length = content.Left();
        if (length == 0 || length > 4 || (isShortest && length > 1 && IsSuperfluous(at))) {
            Break();
            return 0;
        }
        uint32_t value = *at & 0x80 ? UINT32_MAX : 0;
        for (size_t i = 0; i < length; ++i)
            value = value << 8 | at[i];
        return static_cast<int>(value);
    }

    unsigned Unsigned(unsigned tag)
    {
        const CReader content = Enter(tag, true);
        const unsigned char* at = content.m_at;
        const size_t length = content.Left();
        if (length == 0 || length > 5 || *at & 0x80 || (length == 5 && *at != 0) ||
            (length > 1 && IsSuperfluous(at))) {
            Break();
            return 0;
        }
        uint32_t value = 0;
        for (size_t i = 0; i < length; ++i)
            value = value << 8 | at[i];
        return value;
    }

    // Of two arcs at least.
    bool ObjectId(BObjectIdentifier& id)
    {
        const CReader content = Enter(eAsnObjectId, true);
        unsigned arcs[kMostArcs];
        unsigned count = 2;
        const unsigned char* at = content.m_at;
        const unsigned char* const end = content.m_end;
        if (at == end || *at & 0x80)
            return BreakOff();
        arcs[0] = std::min(*at / 40u, 2u);
        arcs[1] = *at - 40 * arcs[0];
        for (++at; at != end; ++count) {
            if (count == kMostArcs)
                return BreakOff();
            if (!(*at & 0x80))
                arcs[count] = *at++;
            else if (!LongArc(at, end, arcs[count]))
                return BreakOff();
        }
        return id.Set(count, arcs) || BreakOff();
    }

    // How many elements there are from here on. Takes none.
    unsigned Count(unsigned tag, bool isShortest) const
    {
        unsigned count = 0;
        for (CReader rest = *this; !rest.IsAtEnd(); ++count)
            rest.Enter(tag, isShortest);
        return count;
    }

private:
    CReader Break()
    {
        m_isBroken = true;
        m_at = m_end;
        return CReader(m_end, m_end);
    }
    bool BreakOff()
    {
        Break();
        return false;
    }

    bool ReadLength(bool isShortest, size_t& length)
    {
        length = m_at[1];
        m_at += 2;
        if (length & 0x80) {
            size_t digits = length & 0x7f;
            if (digits == 0 || digits > 4 || digits > Left() || (isShortest && *m_at == 0))
                return false;
            for (length = 0; digits; --digits)
                length = length << 8 | *m_at++;
            if (isShortest && length < 0x80)
                return false;
        }
        return length <= Left();
    }

    // The first of several octets of a number.
    static bool IsSuperfluous(const unsigned char* at)
    {
        return (at[0] == 0 && !(at[1] & 0x80)) || (at[0] == 0xff && at[1] & 0x80);
    }

    static bool LongArc(const unsigned char*& at, const unsigned char* end, unsigned& arc)
    {
        if (*at == 0x80)
            return false;
        uint64_t value = 0;
        unsigned char octet;
        do {
            if (at == end)
                return false;
            octet = *at++;
            value = value << 7 | (octet & 0x7f);
            if (value > UINT32_MAX)
                return false;
        } while (octet & 0x80);
        arc = static_cast<unsigned>(value);
        return true;
    }

    const unsigned char* m_at;
    const unsigned char* m_end;
    bool m_isBroken = false;
};

bool ReadOctets(CReader& reader, BOctetString& octets)
{
    const CReader content = reader.Enter(eAsnOctetString, true);
    if (reader.IsBroken())
        return false;
    return octets.Assign(static_cast<unsigned>(content.Left()), content.At());
}

// Whether the number is read into the value by `set`.
template <class TSet>
bool ReadUnsigned(CReader& reader, TSet set)
{
    const unsigned number = reader.Unsigned(reader.Tag());
    if (!reader.IsBroken())
        set(number);
    return !reader.IsBroken();
}

bool ReadValue(CReader& reader, BObjectSyntax& value)
{
    switch (reader.Tag()) {
    case eAsnInteger:
        value.SetInt(reader.Integer(true));
        return !reader.IsBroken();
    case eAsnOctetString: {
        BOctetString octets;
        if (!ReadOctets(reader, octets))
            return false;
        value.SetOctets(octets);
        return value.Octets().Length() == octets.Length();
    }
    case eAsnObjectId: {
        BObjectIdentifier id;
        if (!reader.ObjectId(id))
            return false;
        value.SetObjectId(id);
        return value.ObjectId().Length() == id.Length();
    }
    case eAsnIpAddress: {
        const CReader content = reader.Enter(eAsnIpAddress, true);
        const unsigned char* at = content.At();
        if (content.Left() != 4)
            return false;
        value.SetIpAddress(BIpAddress(at[0], at[1], at[2], at[3]));
        return true;
    }
    case eAsnCounter32:
        return ReadUnsigned(reader, [&](unsigned number) { value.SetCounter(number); });
    case eAsnGauge32:
        return ReadUnsigned(reader, [&](unsigned number) { value.SetGauge(number); });
    case eAsnTimeTicks:
        return ReadUnsigned(reader, [&](unsigned number) { value.SetTimeTicks(number); });
    default:
        return false;
    }
}

bool ReadNull(CReader& reader)
{
    return reader.Enter(eAsnNull, true).IsAtEnd() && !reader.IsBroken();
}

bool ReadBindings(CReader list, SRequest& request)
{
    static const BVarBind kEmpty;
    const size_t most = list.Left() / kShortestBinding;
    if (!request.bindings.Reserve(
            std::min(list.Count(kSequence, true), static_cast<unsigned>(most))))
        return false;
    while (!list.IsAtEnd()) {
        CReader binding = list.Enter(kSequence, true);
        // The name is read in its place: a copy would cost as much again.
        if (list.IsBroken() || !request.bindings.Append(kEmpty))
            return false;
        BVarBind& read = request.bindings.Last();
        if (!binding.ObjectId(read.Name()))
            return false;
        read.Value().SetNull();
        const bool hasValue = request.pduType == ePduSet && binding.Tag() != eAsnNull;
        if (!(hasValue ? ReadValue(binding, read.Value()) : ReadNull(binding)) ||
            !binding.IsAtEnd())
            return false;
    }
    return true;
}

bool ReadPdu(CReader pdu, SRequest& request, std::vector<unsigned char>& bindings)
{
    request.requestId = pdu.Integer(false);
    const int first = pdu.Integer(false);
    const int second = pdu.Integer(false);
    if (request.pduType == ePduGetBulk) {
        request.nonRepeaters = first;
        request.maxRepetitions = second;
    }
    const CReader list = pdu.Enter(kSequence, false);
    if (pdu.IsBroken() || !pdu.IsAtEnd())
        return false;
    bindings.assign(list.At(), list.At() + list.Left());
    return ReadBindings(list, request);
}

bool IsRequest(unsigned tag)
{
    return tag == ePduGet || tag == ePduGetNext || tag == ePduGetBulk || tag == ePduSet;
}

// Writes elements from the last to the first, which needs no length beforehand. It may be
// full while there is some room yet, less than a name takes.
class CWriter {
public:
    CWriter(unsigned char* begin, unsigned char* end) : m_begin(begin), m_at(end) {}

    bool IsFull() const { return m_isFull; }
    const unsigned char* At() const { return m_at; }

    void Bytes(const unsigned char* bytes, size_t count)
    {
        if (Left() < count) {
            m_isFull = true;
            return;
        }
        m_at -= count;
        if (count)
            std::memcpy(m_at, bytes, count);
    }
    void Byte(unsigned byte)
    {
        if (m_at == m_begin)
            m_isFull = true;
        else
            *--m_at = static_cast<unsigned char>(byte);
    }
    // The tag and the length of what has been written since `end`.
    void Wrap(unsigned tag, const unsigned char* end)
    {
        size_t length = static_cast<size_t>(end - m_at);
        if (length < 0x80) {
            Byte(static_cast<unsigned>(length));
        } else {
            unsigned digits = 0;
            for (; length; length >>= 8, ++digits)
                Byte(static_cast<unsigned>(length & 0xff));
            Byte(0x80 | digits);
        }
        Byte(tag);
    }

    void Integer(int value)
    {
        const unsigned char* end = m_at;
        int rest = value;
        do {
            Byte(static_cast<unsigned>(rest) & 0xff);
            rest >>= 8;
        } while (rest != 0 && rest != -1);
        if ((value < 0) != ((*m_at & 0x80) != 0))
            Byte(value < 0 ? 0xff : 0);
        Wrap(eAsnInteger, end);
    }
    void Unsigned(unsigned tag, uint64_t value)
    {
        const unsigned char* end = m_at;
        do {
            Byte(static_cast<unsigned>(value & 0xff));
            value >>= 8;
        } while (value);
        if (*m_at & 0x80)
            Byte(0);
        Wrap(tag, end);
    }
    // False when no message can hold it. One that is shorter than any in a message is
    // written like the wire library does.
    bool ObjectId(const BObjectIdentifier& id)
    {
        const unsigned char* end = m_at;
        const unsigned count = id.Length();
        const unsigned first = count > 0 ? id[0] : 0;
        const unsigned second = count > 1 ? id[1] : 0;
        if (count > kMostArcs || first > 2 || (first < 2 && second >= 40))
            return false;
        if (Left() < (count + 1) * kLongestArc) {
            m_isFull = true;
            return true;
        }
        unsigned char* at = m_at;
        for (unsigned i = count; i > 2; --i)
            Arc(at, id[i - 1]);
        Arc(at, count == 1 ? first : 40ull * first + second);
        if (count == 0)
            *--at = 0;
        m_at = at;
        Wrap(eAsnObjectId, end);
        return true;
    }

private:
    size_t Left() const { return static_cast<size_t>(m_at - m_begin); }

    static void Arc(unsigned char*& at, uint64_t arc)
    {
        *--at = static_cast<unsigned char>(arc & 0x7f);
        while (arc >>= 7)
            *--at = static_cast<unsigned char>(0x80 | (arc & 0x7f));
    }

    unsigned char* const m_begin;
    unsigned char* m_at;
    bool m_isFull = false;
};

bool WriteValue(CWriter& writer, const BObjectSyntax& value)
{
    const unsigned tag = value.Syntax();
    const unsigned char* end = writer.At();
    switch (tag) {
    case eAsnInteger:
        writer.Integer(value.Int());
        return true;
    case eAsnCounter32:
    case eAsnGauge32:
    case eAsnTimeTicks:
        writer.Unsigned(tag, value.Unsigned());
        return true;
    case eAsnCounter64:
        writer.Unsigned(tag, static_cast<uint64_t>(value.Ctr64().high) << 32 | value.Ctr64().low);
        return true;
    case eAsnOctetString:
    case eAsnOpaque:
        writer.Bytes(value.Octets().Data(), value.Octets().Length());
        break;
    case eAsnObjectId:
        return writer.ObjectId(value.ObjectId());
    case eAsnIpAddress: {
        const BIpAddress address = value.IpAddress();
        const unsigned char bytes[4] = {address[0], address[1], address[2], address[3]};
        writer.Bytes(bytes, sizeof bytes);
        break;
    }
    case eAsnNull:
    case eNoSuchObject:
    case eNoSuchInstance:
    case eEndOfMibView:
        break;
    default:
        return false;
    }
    writer.Wrap(tag, end);
    return true;
}

bool WriteBindings(CWriter& writer, const std::vector<BVarBind>& bindings)
{
    for (auto binding = bindings.rbegin(); binding != bindings.rend(); ++binding) {
        const unsigned char* end = writer.At();
        if (!WriteValue(writer, binding->Value()) || !writer.ObjectId(binding->Name()))
            return false;
        writer.Wrap(kSequence, end);
    }
    return true;
}

} // namespace

bool ReadPlainRequest(const unsigned char* message, size_t length, SRequest& request,
                      std::vector<unsigned char>& bindings)
{
    CReader datagram(message, message + length);
    CReader whole = datagram.Enter(kSequence, false);
    const int version = whole.Integer(false);
    const CReader community = whole.Enter(eAsnOctetString, false);
    const unsigned tag = whole.Tag();
    if (datagram.IsBroken() || !datagram.IsAtEnd() || whole.IsBroken() ||
        (version != eSnmpV1 && version != eSnmpV2c) || community.Left() > kLongestCommunity ||
        !IsRequest(tag))
        return false;
    const CReader pdu = whole.Enter(tag, false);
    if (whole.IsBroken() || !whole.IsAtEnd())
        return false;
    request.protocol = static_cast<EProtocol>(version);
    request.pduType = static_cast<int>(tag);
    request.community.assign(reinterpret_cast<const char*>(community.At()), community.Left());
    return ReadPdu(pdu, request, bindings);
}

int BPlainAnswer::Write(const SRequest& request, const std::vector<unsigned char>& bindings,
                        const SResponse& response)
{
    unsigned char* const begin = m_room.data();
    unsigned char* const end = begin + m_room.size();
    CWriter writer(begin, end);
    if (response.echo)
        writer.Bytes(bindings.data(), bindings.size());
    else if (!WriteBindings(writer, response.bindings))
        return eSnmpGenErr;
    writer.Wrap(kSequence, end);
    writer.Integer(response.index);
    writer.Integer(response.status);
    writer.Integer(request.requestId);
    writer.Wrap(kResponse, end);
    const unsigned char* behind = writer.At();
    writer.Bytes(reinterpret_cast<const unsigned char*>(request.community.data()),
                 request.community.size());
    writer.Wrap(eAsnOctetString, behind);
    writer.Integer(request.protocol);
    writer.Wrap(kSequence, end);
    m_begin = static_cast<size_t>(writer.At() - begin);
    return writer.IsFull() || Length() > request.maxMessage ? eSnmpTooBig : 0;
}

} // namespace VLK::host
