// A subtree handler whose answers a test writes on the spot. Without one it
// succeeds and changes nothing.
#pragma once

#include "tests/support/Oids.h"

#include <vkmibh/subtree.h>

#include <functional>

namespace VLK {
namespace Test {

class CallbackHandler : public BMibSubtreeHandler {
public:
    using BMibSubtreeHandler::GetNext;

    explicit CallbackHandler(const char* oid)
        : BMibSubtreeHandler(BString("callback"), MakeOid(oid))
    {
    }

    int Get(unsigned id, BVarBindList& list, int& index, int count) override
    {
        return onGet ? onGet(id, list, index, count) : eSnmpNoError;
    }
    int GetNext(unsigned id, BVarBind& binding) override
    {
        return onGetNext ? onGetNext(id, binding) : eSnmpNoSuchName;
    }
    int Set(unsigned id, const BVarBindList& list, ESnmpSetOpCode op, void**, int& index,
            int) override
    {
        return onSet ? onSet(id, list, op, index) : eSnmpNoError;
    }

    std::function<int(unsigned id, BVarBindList&, int& index, int count)> onGet;
    std::function<int(unsigned id, BVarBind&)> onGetNext;
    std::function<int(unsigned id, const BVarBindList&, ESnmpSetOpCode, int& index)> onSet;
};

} // namespace Test
} // namespace VLK
