// Messages of SNMPv3 without authentication, and what they are answered with.
#pragma once

#include "Ber.h"

namespace v3 {

inline const ber::Oid kNotInTimeWindows{1, 3, 6, 1, 6, 3, 15, 1, 1, 2, 0};
inline const ber::Oid kUnknownUserNames{1, 3, 6, 1, 6, 3, 15, 1, 1, 3, 0};
inline const ber::Oid kUnknownEngineIds{1, 3, 6, 1, 6, 3, 15, 1, 1, 4, 0};
inline const ber::Oid kWrongDigests{1, 3, 6, 1, 6, 3, 15, 1, 1, 5, 0};
inline const ber::Oid kUnknownPduHandlers{1, 3, 6, 1, 6, 3, 11, 2, 1, 3, 0};
inline const ber::Oid kUnknownContexts{1, 3, 6, 1, 6, 3, 12, 1, 5, 0};

enum EPdu {
    kGet = 0xa0,
    kGetBulk = 0xa5,
    kResponse = 0xa2,
    kSet = 0xa3,
    kInform = 0xa6,
    kReport = 0xa8
};

struct Request {
    ber::Bytes engineId;
    ber::Bytes user;
    ber::Bytes contextEngineId;
    ber::Bytes context;
    int maxSize = 65507;
    char flags = 4; // reportable
    int pduType = kGet;
    int first = 0;
    int second = 0;
    ber::Bytes bindings;
    int id = 4711; // of message and request

    ber::Bytes Encode() const
    {
        ber::Bytes global = ber::Integer(id) + ber::Integer(maxSize) +
                            ber::Tlv(4, ber::Bytes(1, flags)) + ber::Integer(3);
        ber::Bytes security = ber::Tlv(4, engineId) + ber::Integer(0) + ber::Integer(0) +
                              ber::Tlv(4, user) + ber::Tlv(4, "") + ber::Tlv(4, "");
        ber::Bytes pdu = ber::Integer(id) + ber::Integer(first) + ber::Integer(second) +
                         ber::Tlv(0x30, bindings);
        ber::Bytes scoped =
            ber::Tlv(4, contextEngineId) + ber::Tlv(4, context) + ber::Tlv(pduType, pdu);
        return ber::Tlv(0x30, ber::Integer(3) + ber::Tlv(0x30, global) +
                                  ber::Tlv(4, ber::Tlv(0x30, security)) + ber::Tlv(0x30, scoped));
    }
};

// Of a message that is not encrypted.
struct Reply {
    bool ok = false;
    ber::Bytes engineId;
    int boots = 0;
    ber::Bytes user;
    int pduType = -1;
    int status = -1;
    std::vector<ber::Bytes> names;
    std::vector<ber::Bytes> values;

    bool Reports(const ber::Oid& counter) const
    {
        return ok && pduType == kReport && names.size() == 1 && names[0] == ber::Name(counter);
    }
};

inline Reply ReadReply(const ber::Bytes& datagram)
{
    Reply reply;
    ber::Reader message(ber::Reader(datagram).Element());
    message.Number();
    message.Element();
    ber::Reader security(ber::Reader(message.Element()).Element());
    reply.engineId = security.Element();
    reply.boots = security.Number();
    security.Number();
    reply.user = security.Element();
    ber::Reader scoped(message.Element());
    scoped.Element();
    scoped.Element();
    reply.pduType = scoped.Tag();
    ber::Reader pdu(scoped.Element());
    pdu.Number();
    reply.status = pdu.Number();
    pdu.Number();
    ber::Reader list(pdu.Element());
    while (!list.AtEnd()) {
        ber::Reader binding(list.Element());
        reply.names.push_back(binding.Element());
        reply.values.push_back(binding.Element());
    }
    reply.ok = !datagram.empty() && message.Ok() && security.Ok() && scoped.Ok() && pdu.Ok();
    return reply;
}

} // namespace v3
