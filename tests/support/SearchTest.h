// A handler whose successor search can be asked step by step.
#pragma once

#include "tests/support/FakeAccess.h"
#include "tests/support/ListHandler.h"
#include <vkmibh/testing/requests.h>

#include <gtest/gtest.h>

namespace VLK {
namespace Test {

// Opens the steps of the search.
class Opened : public BMibHandler {
public:
    using BMibHandler::BMibHandler;
    using BMibHandler::FindNextSubtreeHandlerNode;
    using BMibHandler::IsEndOfMib;
    using BMibHandler::ResolveGetNext;
    using BMibHandler::ResolveGetNextStartingFromRegion;
};

class SearchTest : public ::testing::Test {
protected:
    SearchTest() : handler(&tree, &access) {}

    void Register(ListHandler& module) { ASSERT_TRUE(handler.RegisterSubtreeHandler(&module)); }
    BMibNode* NodeOf(const char* oid) { return tree.FindNode(MakeOid(oid)); }
    int Ask(const char* name, bool isV1 = false)
    {
        binding = BVarBind(MakeOid(name));
        return handler.ResolveGetNext(1, isV1, security, context, binding);
    }
    std::string Answer() const
    {
        return binding.Value().Syntax() == eEndOfMibView ? "end after " + TextOf(binding.Name())
                                                         : TextOf(binding.Name());
    }
    // A module that fails on its way, with the name moved to `at`.
    static std::function<int(BVarBind&)> FailAt(const char* at, int status)
    {
        return [at, status](BVarBind& asked) {
            asked.Set(MakeOid(at));
            return status;
        };
    }

    BMibTree tree;
    FakeAccess access;
    Opened handler;
    BVarBind binding;
    BSecurityParams security;
    BString context;
};

} // namespace Test
} // namespace VLK
