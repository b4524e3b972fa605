// One request and its answer, free of any protocol library's types.
#pragma once

#include "host/TransportAddress.h"

#include <string>
#include <vector>
#include <vkmibh/transactions.h>
#include <vkmibh/values.h>

namespace VLK::host {

// The protocol ids of transactions.
enum EProtocol { eSnmpV1 = 0, eSnmpV2c = 1, eSnmpV3 = 3 };

struct SRequest {
    EProtocol protocol = eSnmpV2c;
    int pduType = 0;
    int requestId = 0;
    std::string community; // SNMPv1 and SNMPv2c
    // SNMPv3: who asks, as the message has proved it, and where.
    BSecurityParams security;
    BString context;
    size_t engineIdLength = 0; // of each of the two engine IDs in the answer
    BTransportAddress local;
    BTransportAddress remote;
    // As they came, negative ones too; get-bulk only.
    int nonRepeaters = 0;
    int maxRepetitions = 0;
    BVarBindList bindings;
    // The first binding (one-based) whose value none of our types can hold,
    // and the error status that says so; 0 when there is none.
    int unfitIndex = 0;
    int unfitStatus = 0;
    // Bytes that the encoded answer may take.
    unsigned maxMessage = 0;
};

struct SResponse {
    // SNMPv3: there is no such context, and nothing else here counts.
    bool isContextUnknown = false;
    int status = 0;
    int index = 0;
    // The bindings of the request go back as they came; `bindings` is empty.
    bool echo = false;
    std::vector<BVarBind> bindings;
};

} // namespace VLK::host
