// What the kit says of a good module, and of each way to be a bad one.
#include "Lamp.h"

#include <vkmibh/testing/testing.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace VLK {
namespace Test {
namespace {

using testing::HasSubstr;

class LampTest : public testing::Test {
protected:
    std::string Walks(std::vector<SServed> served)
    {
        return TwoWalks(module.lamp, kLamp, std::move(served)).Run();
    }

    CLampModule module;
    ModuleClient client{module, kLamp};
};

constexpr SServed kBrightness{"1.3.6.1.4.1.32473.7.1.0", eAsnInteger, "5"};
constexpr SServed kName{"1.3.6.1.4.1.32473.7.2.0", eAsnOctetString, "lamp"};

TEST_F(LampTest, GoodModuleHasNothingWrong)
{
    EXPECT_EQ(client.Problem(), "");
    EXPECT_EQ(CheckMaps(module), "");
    EXPECT_EQ(Walks({kBrightness, kName}), "");
    EXPECT_EQ(client.Walk(), (std::vector<std::string>{"1.0=5", "2.0=lamp"}));
    EXPECT_EQ(client.CheckUndo({{"1.0", Number(7)}}), "");
    EXPECT_EQ(client.Get("1.0"), "7");
}

TEST_F(LampTest, StatusesOfRefusedSets)
{
    EXPECT_EQ(client.Set({{"1.0", Number(10)}}), eSnmpWrongValue);
    EXPECT_EQ(client.Set({{"1.0", Number(7)}, {"1.0", Bytes("x")}}), eSnmpWrongType);
    EXPECT_EQ(client.errorIndex, 2);
    EXPECT_EQ(client.Set({{"2.0", Bytes("x")}}), eSnmpNotWritable);
    EXPECT_EQ(client.Set({{"1.0", Gauge(7)}}), eSnmpWrongType);
    EXPECT_EQ(client.Set({{"1.0", ObjectId("1.3")}}), eSnmpWrongType);
    EXPECT_EQ(client.Get("1.0"), "5");
    EXPECT_EQ(client.Get("3.0"), "Null/noSuchObject");
}

TEST_F(LampTest, HoleIsTold)
{
    module.lamp.hidesName = true;
    const std::string wrong = Walks({kBrightness, kName});
    EXPECT_THAT(wrong, HasSubstr("get 1.3.6.1.4.1.32473.7.2.0: want tag 4 'lamp', got tag 129"));
    EXPECT_THAT(wrong, HasSubstr("walk, step 2: want 1.3.6.1.4.1.32473.7.2.0, got endOfMibView\n"));
    EXPECT_THAT(wrong, HasSubstr("next of 1.3.6.1.4.1.32473.7.1.0: want 1.3.6.1.4.1.32473.7.2.0, "
                                 "got endOfMibView\n"));
    EXPECT_EQ(Walks({kBrightness}), "");
}

TEST_F(LampTest, WhatTheFixtureDoesNotKnowIsTold)
{
    EXPECT_THAT(
        Walks({kBrightness}),
        HasSubstr("walk, after the last: want endOfMibView, got 1.3.6.1.4.1.32473.7.2.0\n"));
}

TEST_F(LampTest, OtherValueIsTold)
{
    module.lamp.brightness = 6;
    EXPECT_THAT(Walks({kBrightness, kName}),
                HasSubstr("get 1.3.6.1.4.1.32473.7.1.0: want tag 2 '5', got tag 2 '6'\n"));
}

TEST_F(LampTest, UnsortedFixtureIsTold)
{
    EXPECT_THAT(Walks({kName, kBrightness}), HasSubstr("not in rising order: sort them"));
}

TEST_F(LampTest, ForgottenUndoIsTold)
{
    module.lamp.forgetsUndo = true;
    EXPECT_THAT(client.CheckUndo({{"1.0", Number(7)}}),
                HasSubstr("before\n  1.0=5\n  2.0=lamp\nafter\n  1.0=7\n  2.0=lamp\nput back"));
}

TEST_F(LampTest, ChangeInTheTestPhaseIsTold)
{
    module.lamp.changesInTest = true;
    EXPECT_THAT(client.CheckUndo({{"1.0", Number(7)}}),
                HasSubstr("after a SET that was only tested the module is not as it was"));
}

TEST_F(LampTest, UndoThatFailsIsTold)
{
    module.lamp.undoStatus = eSnmpGenErr;
    EXPECT_THAT(client.CheckUndo({{"1.0", Number(7)}}),
                HasSubstr("let the module's eSetUndo return eSnmpNoError"));
}

TEST_F(LampTest, SetThatChangesNothingProvesNoUndo)
{
    EXPECT_THAT(client.CheckUndo({{"1.0", Number(5)}}), HasSubstr("changed nothing"));
    module.lamp.ignoresSets = true;
    EXPECT_THAT(client.CheckUndo({{"1.0", Number(7)}}), HasSubstr("changed nothing"));
}

TEST_F(LampTest, RefusedSetProvesNoUndo)
{
    EXPECT_THAT(client.CheckUndo({{"1.0", Number(99)}}),
                HasSubstr("was to fail with commitFailed at binding 2, behind the module's own; it "
                          "ended with wrongValue"));
}

TEST_F(LampTest, PhasesReachTheNeighbourInOrder)
{
    EXPECT_EQ(client.SetInVain({{"1.0", Number(7)}}), eSnmpCommitFailed);
    EXPECT_EQ(client.log, (SetLog{"N test 1+1", "N commit 1+1", "N undo 1+1", "N cleanup 1+1"}));
    EXPECT_EQ(client.neighbour.slotErrors, 0);
}

TEST(ModuleClient, AsksASingleImplementation)
{
    CLamp lamp;
    ModuleClient client(lamp);
    EXPECT_EQ(client.Problem(), "");
    EXPECT_EQ(client.Walk(), (std::vector<std::string>{"1.0=5", "2.0=lamp"}));
    EXPECT_EQ(client.CheckUndo({{"1.0", Number(7)}}), "");
}

TEST(ModuleClient, HandlerWithoutIdentifierIsTold)
{
    SetLog log;
    RecorderHandler nowhere('A', "", log);
    EXPECT_THAT(ModuleClient(nowhere).Problem(), HasSubstr("it has no identifier"));
}

// Its region ends as the plain interface allows it.
class CList : public BMibSubtreeHandler {
public:
    CList() : BMibSubtreeHandler("list", MakeOid(kLamp)) {}

    using BMibSubtreeHandler::GetNext;
    int Get(unsigned, BVarBindList& list, int& index, int) override
    {
        list[index].Value().SetInt(5);
        return eSnmpNoError;
    }
    int GetNext(unsigned, BVarBind& binding) override
    {
        if (binding.Name().Compare(m_only) >= 0) {
            binding.Value().SetV2Exception(eNoSuchInstance);
            return endStatus;
        }
        binding.Set(m_only);
        binding.Value().SetInt(5);
        return eSnmpNoError;
    }
    int Set(unsigned, const BVarBindList&, ESnmpSetOpCode, void**, int&, int) override
    {
        return eSnmpNotWritable;
    }

    int endStatus = eSnmpNoError;

private:
    const BObjectIdentifier m_only = MakeOid(kBrightness.name);
};

TEST(TwoWalks, HandlerWrittenByHandMayEndInOtherWords)
{
    CList list;
    EXPECT_EQ(TwoWalks(list, kLamp, {kBrightness}).Run(), "");
    list.endStatus = eSnmpNoSuchName;
    EXPECT_EQ(TwoWalks(list, kLamp, {kBrightness}).Run(), "");
    list.endStatus = eSnmpGenErr;
    EXPECT_THAT(TwoWalks(list, kLamp, {kBrightness}).Run(),
                HasSubstr("walk, after the last: want endOfMibView, got status generalError\n"));
}

TEST(ModuleClient, ModuleThatIsNotThereIsTold)
{
    CLampModule module;
    module.isThere = false;
    ModuleClient client(module, kLamp);
    EXPECT_THAT(client.Problem(), HasSubstr("GetImplAt() gave null"));
    EXPECT_THAT(CheckMaps(module), HasSubstr("implementation 0 is null"));
}

} // namespace
} // namespace Test
} // namespace VLK
