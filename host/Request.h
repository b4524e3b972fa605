// One request and its answer, free of any protocol library's types.
#pragma once

#include "host/TransportAddress.h"

#include <string>
#include <vector>
#include <vkmibh/values.h>

namespace VLK::host {

// The protocol ids of transactions.
enum EProtocol { eSnmpV1 = 0, eSnmpV2c = 1 };

struct SRequest {
    EProtocol protocol = eSnmpV2c;
    int pduType = 0;
    int requestId = 0;
    std::string community;
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
    int status = 0;
    int index = 0;
    // The bindings of the request go back as they came; `bindings` is empty.
    bool echo = false;
    std::vector<BVarBind> bindings;
};

} // namespace VLK::host
