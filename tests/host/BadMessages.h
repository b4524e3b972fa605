// Messages that no manager sends, of every kind that one can think of.
#pragma once

#include "V3Message.h"

#include <algorithm>
#include <random>

// Spoils whole messages, and makes others up. The same seed makes the same ones.
class BadMessages {
public:
    static constexpr unsigned kKinds = 18;

    // Request id of whole messages; each time one is spoiled it gets another.
    static constexpr int kId = 4711;

    // Whole messages of any version, to be spoiled.
    BadMessages(unsigned seed, std::vector<ber::Bytes> whole)
        : m_random(seed), m_whole(std::move(whole))
    {
    }

    ber::Bytes Next()
    {
        const unsigned kind = m_made++ % kKinds;
        return kind < 9 ? Spoiled(kind) : MadeUp(kind);
    }

private:
    unsigned Below(size_t bound) { return static_cast<unsigned>(m_random() % bound); }
    char Octet() { return static_cast<char>(Below(256)); }
    ber::Bytes Octets(size_t count)
    {
        ber::Bytes octets;
        while (octets.size() < count)
            octets += Octet();
        return octets;
    }
    template <class T>
    const T& OneOf(const std::vector<T>& all)
    {
        return all[Below(all.size())];
    }
    int Id() { return static_cast<int>(1 + Below(0xffffff)); }

    ber::Bytes Fresh(ber::Bytes message)
    {
        const ber::Bytes old = ber::Integer(kId);
        const ber::Bytes id = ber::Integer(Id());
        for (size_t at = 0; (at = message.find(old, at)) != message.npos;)
            message.replace(at, old.size(), id);
        return message;
    }

    ber::Bytes Spoiled(unsigned kind)
    {
        ber::Bytes message = Fresh(OneOf(m_whole));
        switch (kind) {
        case 0: // each length in its turn
            return message.substr(0, m_length++ % (message.size() + 1));
        case 1:
            return message + Octets(1 + Below(300));
        case 2:
            for (unsigned flips = 1 + Below(3); flips > 0; --flips) {
                const int bit = 1 << Below(8);
                char& octet = message[Below(message.size())];
                octet = static_cast<char>(octet ^ bit);
            }
            return message;
        case 3:
            for (unsigned count = 1 + Below(8); count > 0; --count)
                message[Below(message.size())] = Octet();
            return message;
        case 4:
            return message.insert(Below(message.size()), Octets(1 + Below(4)));
        case 5:
            return message.erase(Below(message.size()), 1 + Below(4));
        case 6:
            return WithLength(message);
        case 7:
            message[OneOf(Elements(message))] = OneOf(kTags);
            return message;
        default:
            return OtherVersion(message);
        }
    }

    ber::Bytes MadeUp(unsigned kind)
    {
        switch (kind) {
        case 9:
            return Community(ber::Binding(kDescr, Number()));
        case 10:
            return Community(ber::Tlv(0x30, Name() + ber::Tlv(5, "")));
        case 11:
            return Deep();
        case 12:
            return Community(Empties());
        case 13:
            return Formats();
        case 14:
            return Bulk();
        case 15:
            return Unasked();
        case 16:
            return Security();
        default:
            return Below(64) ? Octets(Below(200)) : Huge();
        }
    }

    // Where the elements begin that can be reached from the outermost one.
    static std::vector<size_t> Elements(const ber::Bytes& message)
    {
        std::vector<size_t> starts;
        for (size_t at = 0; at + 2 <= message.size();) {
            starts.push_back(at);
            const unsigned char tag = static_cast<unsigned char>(message[at]);
            const unsigned char length = static_cast<unsigned char>(message[at + 1]);
            const size_t header = 2 + (length & 0x80 ? length & 0x7fu : 0u);
            at += header + (tag & 0x20 || length & 0x80 ? 0 : length);
        }
        return starts;
    }

    // Another length where one stands.
    ber::Bytes WithLength(ber::Bytes message)
    {
        static const std::vector<ber::Bytes> lengths{
            ber::Bytes("\x80", 1),                                 // indefinite
            ber::Bytes("\xff", 1),                                 // reserved
            ber::Bytes("\x84\x7f\xff\xff\xff", 5),                 // beyond any datagram
            ber::Bytes("\x84\xff\xff\xff\xff", 5),                 // negative
            ber::Bytes("\x84\x80\x00\x00\x00", 5),                 //
            ber::Bytes("\x85\x01\x00\x00\x00\x05", 6),             // five octets
            ber::Bytes("\x88\xff\xff\xff\xff\xff\xff\xff\xff", 9), // eight
            ber::Bytes("\x89\x00\x00\x00\x00\x00\x00\x00\x00\x05", 10),
            ber::Bytes("\x84\x00\x00\x00\x05", 5), // longer than it need be
            ber::Bytes("\x82\xff\xff", 3),
            ber::Bytes("\x81", 1),
            ber::Bytes("\x00", 1),
            ber::Bytes("\x01", 1),
            ber::Bytes("\x7f", 1),
        };
        const size_t at = OneOf(Elements(message)) + 1;
        return message.replace(at, 1, OneOf(lengths));
    }

    // The body of a message behind the header of another version.
    ber::Bytes OtherVersion(ber::Bytes message)
    {
        const size_t header =
            message.size() > 1 && (message[1] & 0x80) ? 2u + (message[1] & 0x7f) : 2u;
        static const std::vector<int> versions{0, 1, 2, 3, -1, 127, 128, 65536, -2147483647 - 1};
        const ber::Bytes version = ber::Integer(OneOf(versions));
        if (header + 2 >= message.size())
            return message;
        const size_t length = static_cast<unsigned char>(message[header + 1]) & 0x7fu;
        return ber::Tlv(0x30, version + (header + 2 + length < message.size()
                                             ? message.substr(header + 2 + length)
                                             : ""));
    }

    ber::Bytes Community(const ber::Bytes& bindings)
    {
        static const std::vector<ber::Bytes> communities{"public", "public", "boss", "boss",
                                                         "nobody", "",       "publi"};
        static const std::vector<int> types{0xa0, 0xa1, 0xa3, 0xa5};
        return ber::Message(static_cast<int>(Below(2)), OneOf(communities), OneOf(types), Id(),
                            static_cast<int>(Below(3)), static_cast<int>(Below(3)), bindings);
    }

    // Of any tag and width.
    ber::Bytes Number()
    {
        static const std::vector<int> tags{2, 0x41, 0x42, 0x43, 0x46, 0x47};
        static const std::vector<ber::Bytes> numbers{
            ber::Bytes("\x80\x00\x00\x00", 4),
            ber::Bytes("\x7f\xff\xff\xff", 4),
            ber::Bytes("\x00\xff\xff\xff\xff", 5),
            ber::Bytes("\xff\x7f\xff\xff\xff", 5),
            ber::Bytes("\x01\x00\x00\x00\x00", 5),
            ber::Bytes("\x7f\xff\xff\xff\xff\xff\xff\xff", 8),
            ber::Bytes("\x80\x00\x00\x00\x00\x00\x00\x00", 8),
            ber::Bytes("\x00\xff\xff\xff\xff\xff\xff\xff\xff", 9),
            ber::Bytes("\x01\xff\xff\xff\xff\xff\xff\xff\xff", 9),
            ber::Bytes(200, '\xff'),
            ber::Bytes(200, '\0'),
            ber::Bytes(),
        };
        return ber::Tlv(OneOf(tags), OneOf(numbers));
    }

    ber::Bytes Name()
    {
        ber::Bytes name("\x2b\x06\x01", 3);
        switch (Below(6)) {
        case 0: // too many arcs
            return ber::Tlv(6, name + ber::Bytes(120 + Below(20), '\x01'));
        case 1:
            return ber::Tlv(6, name + ber::Bytes(1000 + Below(4000), '\x01'));
        case 2: // arcs beyond 32 bits
            return ber::Tlv(6, name + ber::Bytes("\x90\x80\x80\x80\x00", 5));
        case 3: // and 64
            return ber::Tlv(6, name + ber::Bytes(Below(40), '\xff') + '\x7f');
        case 4: // an arc that does not end
            return ber::Tlv(6, name + ber::Bytes(1 + Below(12), '\x81'));
        default: // leading zeros, or a first arc that there is none of
            return ber::Tlv(6, Octets(Below(8)));
        }
    }

    ber::Bytes Deep()
    {
        static const std::vector<int> constructed{0x30, 0xa0, 0xa3, 0xa4, 0xa8, 0x24};
        ber::Bytes inner = ber::Tlv(5, "");
        for (unsigned depth = 1 + Below(Below(16) ? 40 : 3000); depth > 0; --depth)
            inner = ber::Tlv(OneOf(constructed), inner);
        return Below(2) ? inner : Community(inner);
    }

    // Lists and elements with nothing in them.
    ber::Bytes Empties()
    {
        switch (Below(6)) {
        case 0:
            return "";
        case 1:
            return ber::Tlv(0x30, "");
        case 2:
            return ber::Tlv(0x30, ber::Tlv(6, "") + ber::Tlv(5, ""));
        case 3:
            return ber::Tlv(0x30, ber::ObjectId(kDescr));
        case 4:
            return ber::Binding(kContact, ber::Tlv(OneOf(kTags), ""));
        default:
            return ber::Binding(kContact, ber::Tlv(OneOf(kTags), Octets(Below(9))));
        }
    }

    ber::Bytes Formats()
    {
        static const std::vector<ber::Bytes> texts{
            "%s%s%s%s%n%n", "%999999999d", "%x%x\n%p", ber::Bytes("\0%n\0", 4), "\x1b[2J\r\n",
        };
        const ber::Bytes text = OneOf(texts);
        if (Below(20)) // the others take as long as the disk
            return ber::Message(1, text, 0xa0, Id(), 0, 0, ber::Binding(kDescr));
        return ber::Message(1, Below(2) ? "boss" : "public", 0xa3, Id(), 0, 0,
                            ber::Binding(kContact, ber::Tlv(4, text)));
    }

    ber::Bytes Bulk()
    {
        static const std::vector<int> counts{0, 1, -1, 100, 2147483647, -2147483647 - 1};
        ber::Bytes bindings;
        for (unsigned i = Below(Below(20) ? 5 : 3000); i > 0; --i)
            bindings += ber::Binding(kDescr);
        return ber::Message(static_cast<int>(Below(2)), "public", 0xa5, Id(), OneOf(counts),
                            OneOf(counts), bindings);
    }

    // Traps, reports and answers, which an agent is not sent.
    ber::Bytes Unasked()
    {
        static const std::vector<int> types{0xa2, 0xa4, 0xa6, 0xa7, 0xa8, 0xa9, 0xbf, 0x30, 0x04};
        const int type = OneOf(types);
        if (type != 0xa4 || Below(2))
            return ber::Message(static_cast<int>(Below(2)), "boss", type, Id(), 0, 0,
                                ber::Binding(kDescr));
        const ber::Bytes trap = ber::ObjectId({1, 3, 6, 1, 4, 1, 32473}) +
                                ber::Tlv(0x40, Octets(Below(6))) + ber::Integer(6) +
                                ber::Integer(Id()) + ber::Tlv(0x43, Octets(Below(6))) +
                                ber::Tlv(0x30, Octets(Below(9)));
        return ber::Tlv(0x30, ber::Integer(0) + ber::Tlv(4, "boss") + ber::Tlv(0xa4, trap));
    }

    // SNMPv3 with parameters of USM that nobody has.
    ber::Bytes Security()
    {
        static const std::vector<ber::Bytes> users{"", "anyone", "reader", "%n%s"};
        static const std::vector<int> types{0xa0, 0xa1, 0xa3, 0xa5, 0xa6, 0xa8};
        v3::Request request;
        request.engineId = Octets(Below(2) ? Below(40) : 300);
        request.contextEngineId = Below(2) ? request.engineId : Octets(Below(40));
        request.user = Below(8) ? OneOf(users) : Octets(Below(300));
        request.context = Octets(size_t{Below(2)} * Below(300));
        request.flags = Octet();
        request.pduType = OneOf(types);
        request.maxSize = Below(2) ? 65507 : static_cast<int>(m_random());
        request.bindings = ber::Binding(kDescr, Number());
        return request.Encode();
    }

    // As much as a datagram holds, or nearly.
    ber::Bytes Huge()
    {
        switch (Below(4)) {
        case 0:
            return Octets(65507);
        case 1: // thousands of bindings
        {
            ber::Bytes bindings;
            while (bindings.size() < 65000)
                bindings += ber::Binding(kDescr);
            return Community(bindings);
        }
        case 2:
            return Community(ber::Binding(kContact, ber::Tlv(4, ber::Bytes(65000, '%'))));
        default:
            return Community(ber::Tlv(0x30, ber::Tlv(6, ber::Bytes(65000, '\x01'))));
        }
    }

    inline static const ber::Oid kDescr{1, 3, 6, 1, 2, 1, 1, 1, 0};
    inline static const ber::Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
    inline static const std::vector<char> kTags{
        0,      1,      2,      3,      4,      5,      6,      '\x09', '\x1f', '\x24',
        '\x30', '\x31', '\x40', '\x41', '\x43', '\x44', '\x45', '\x46', '\x47', '\x48',
        '\x7f', '\x80', '\x81', '\x82', '\xa0', '\xa2', '\xa4', '\xa8', '\xa9', '\xff'};

    std::mt19937 m_random;
    std::vector<ber::Bytes> m_whole;
    unsigned m_made = 0;
    size_t m_length = 0;
};
