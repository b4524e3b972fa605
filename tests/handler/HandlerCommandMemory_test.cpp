// The console commands while allocations fail one after the other: what is
// printed is whole, what is set is what was typed, and every transaction ends.
#include "tests/support/AllocationSweep.h"
#include "tests/support/CallbackHandler.h"
#include "tests/support/CommandConsole.h"

#include <algorithm>
#include <cstring>

namespace VLK {
namespace Test {
namespace {

using Texts = CommandConsole::Texts;

// Keeps what is written without taking memory.
class FrugalStream : public ICmdStream {
public:
    int GetLine(BString&) override { return 0; }
    int Write(const BString& text) override
    {
        if (m_count < kMaxTexts && m_used + text.length() <= sizeof m_bytes) {
            std::memcpy(m_bytes + m_used, text.c_str(), text.length());
            m_used += text.length();
            m_ends[m_count] = m_used;
        }
        ++m_count;
        return 0;
    }
    Texts Written() const
    {
        Texts texts;
        std::size_t start = 0;
        for (int i = 0; i < m_count && i < kMaxTexts; ++i) {
            texts.emplace_back(m_bytes + start, m_bytes + m_ends[i]);
            start = m_ends[i];
        }
        EXPECT_LE(m_count, kMaxTexts);
        return texts;
    }

private:
    static constexpr int kMaxTexts = 100;
    char m_bytes[8192];
    std::size_t m_ends[kMaxTexts];
    std::size_t m_used = 0;
    int m_count = 0;
};

bool SameBindings(const BVarBindList& a, const BVarBindList& b)
{
    if (a.Count() != b.Count())
        return false;
    for (int i = 0; i < static_cast<int>(a.Count()); ++i) {
        const BObjectSyntax& one = a[i].Value();
        const BObjectSyntax& other = b[i].Value();
        if (a[i].Name() != b[i].Name() || one.Syntax() != other.Syntax() ||
            one.Octets() != other.Octets() || one.ObjectId() != other.ObjectId() ||
            one.Int() != other.Int() || one.Unsigned() != other.Unsigned())
            return false;
    }
    return true;
}

const char kSetLine[] =
    "set 1.3.9.1 2 17 1.3.9.2 4 a_text_that_needs_memory_since_it_is_longer_than_others "
    "1.3.9.3 4 41:42:43 1.3.9.4 6 1.3.6.1.4.1.1.2.3.4.5.6.7.8.9.10.11.12.13 1.3.9.5 64 10.1.2.3 "
    "1.3.9.6 68 opaque_text 1.3.9.7.1.2.3.4.5.6.7.8.9.10.11.12.13.14.15.16.17 65 5 "
    "1.3.9.8 70 5 -a10.1.2.3 -z";

class HandlerCommandMemory : public testing::Test {
protected:
    HandlerCommandMemory() : handler(nullptr), module("1.3.9"), console(handler)
    {
        console.security.securityName = BString("a_security_name_that_needs_memory_as_well");
        console.context = BString("and_so_does_the_name_of_the_context_it_asks_in");
        module.onGet = [this](unsigned id, BVarBindList& list, int& index, int count) {
            Look(id);
            for (int i = index; i < index + count; ++i)
                list[i].Value().SetInt(i);
            return int(eSnmpNoError);
        };
        module.onGetNext = [this](unsigned id, BVarBind& binding) {
            Look(id);
            binding.Value().SetInt(1);
            return binding.Name().Append(9) ? eSnmpNoError : eSnmpGenErr;
        };
        module.onSet = [this](unsigned id, const BVarBindList& list, ESnmpSetOpCode op, int&) {
            Look(id);
            if (op == eSetCommit && learning)
                expected = list;
            else if (op == eSetCommit)
                (SameBindings(list, expected) ? rightSets : wrongSets) += 1;
            return int(eSnmpNoError);
        };
        handler.RegisterSubtreeHandler(&module);
        BTransactions::GetInstance();
    }
    ~HandlerCommandMemory() override { handler.UnregisterSubtreeHandler(&module); }

    void Look(unsigned id)
    {
        transaction = id;
        BTransactions& registry = *BTransactions::GetInstance();
        const int protocolId = registry.GetProtocolId(id);
        BTransactionParameters params;
        const bool told = registry.GetParameters(id, params);
        if (protocolId != 6 || (told && (params.securityName != console.security.securityName ||
                                         params.contextName != console.context)))
            ++wrongTransactions;
    }

    // Types the line while memory fails. Texts may be missing, but each is one
    // of those of a run with memory, in their order, or says at the end that
    // the command failed.
    unsigned Sweep(const std::string& line)
    {
        learning = true;
        const Texts right = console.Type(line);
        learning = false;
        std::istringstream stream(line);
        std::string command;
        stream >> command;
        std::vector<std::string> words;
        for (std::string word; stream >> word;)
            words.push_back(word);
        const BString cmd = StringOf(command);
        const BStringArray args = ArgsOf(words);
        BCmdHandler& asConsole = handler;
        return VLKTest::SweepAllocations(
            [&] {
                rightSets = wrongSets = 0;
                transaction = 0;
                return FrugalStream();
            },
            [&](FrugalStream& out) {
                return asConsole.CmdExecute(out, cmd, args, console.security, console.context);
            },
            [&](FrugalStream& out, int result) {
                EXPECT_EQ(0, result);
                EXPECT_EQ(0, wrongSets);
                EXPECT_EQ(-1, BTransactions::GetInstance()->GetProtocolId(transaction));
                CheckTexts(out.Written(), right, command, words);
            });
    }

    void CheckTexts(const Texts& texts, const Texts& right, const std::string& command,
                    const std::vector<std::string>& words)
    {
        auto next = right.begin();
        for (const std::string& text : texts) {
            const auto found = std::find(next, right.end(), text);
            if (found != right.end()) {
                next = found + 1;
                continue;
            }
            EXPECT_TRUE(&text == &texts.back() && SaysItFailed(text, command, words)) << text;
        }
        if (!texts.empty() && SaysItFailed(texts.back(), command, words)) {
            EXPECT_EQ(0, rightSets);
        }
    }
    static bool SaysItFailed(const std::string& text, const std::string& command,
                             const std::vector<std::string>& words)
    {
        if (text == "snmpErr: resourcesUnavailable at index 0" ||
            text.find("snmpErr: generalError at index ") == 0)
            return true;
        for (const std::string& word : words) {
            if (text == command + ": invalid oid '" + word + "'")
                return true;
        }
        return false;
    }

    BMibHandler handler;
    CallbackHandler module;
    CommandConsole console;
    BVarBindList expected;
    bool learning = false;
    int rightSets = 0;
    int wrongSets = 0;
    int wrongTransactions = 0;
    unsigned transaction = 0;
};

TEST_F(HandlerCommandMemory, ASetIsWhatWasTypedOrDoesNotHappen)
{
    EXPECT_GT(Sweep(kSetLine), 20u);
    EXPECT_EQ(8u, expected.Count());
    EXPECT_EQ(1, rightSets) << "the last run had memory enough";
    EXPECT_EQ(0, wrongTransactions);
}

TEST_F(HandlerCommandMemory, AnswersAreWholeOrMissing)
{
    EXPECT_GT(Sweep("get 1.3.9.1.2.3.4.5.6.7.8.9.10.11.12.13.14.15.16.17.18 1.3.9.2 1.3.9.3 "
                    "1.9.9 1.3.9.4 1.3.9.5 -a10.1.2.3"),
              10u);
    EXPECT_GT(Sweep("getnext 1.3.9.1.2.3.4.5.6.7.8.9.10.11.12.13.14.15.16 1.3.9.2 1.9.9 -x"), 10u);
    EXPECT_EQ(0, wrongTransactions);
}

TEST_F(HandlerCommandMemory, ComplaintsAreWholeOrMissing)
{
    for (const char* line :
         {"get", "set", "set 1.3", "get 1.3.9.1 bad", "set 1.3.9.1 4 41:42 1.3.9.2 99 x",
          "set 1.3.9.1 64 x", "set 1.3.9.1 6 1..3", "unknown", "unknown bad", "get -a1.2.3.4"}) {
        SCOPED_TRACE(line);
        EXPECT_GT(Sweep(line), 0u);
    }
}

TEST_F(HandlerCommandMemory, WithoutARegistryTheRequestRunsUnregistered)
{
    bool ran = false;
    int protocolId = 0;
    module.onGet = [&](unsigned id, BVarBindList&, int&, int) {
        ran = true;
        BTransactions* const registry = BTransactions::GetInstance();
        protocolId = registry ? registry->GetProtocolId(id) : -1;
        return int(eSnmpNoError);
    };
    const BString cmd("get");
    const BStringArray args = ArgsOf({"1.3.9.1"});
    const BSecurityParams security;
    const BString context;
    int runs = 0;
    BCmdHandler& asConsole = handler;
    for (int granted = 0;; ++granted) {
        BTransactions::DestroyInstance();
        BTransactionIdGenerator::DestroyInstance();
        ran = false;
        FrugalStream out;
        bool failed = false;
        {
            FailingAlloc fail(granted, FailingAlloc::eAllLater);
            asConsole.CmdExecute(out, cmd, args, security, context);
            failed = fail.Failed();
        }
        if (ran) {
            ++runs;
            EXPECT_TRUE(protocolId == 6 || (protocolId == -1 && failed)) << granted;
        }
        if (!failed)
            break;
    }
    EXPECT_GT(runs, 1);
    EXPECT_EQ(6, protocolId);
}

TEST_F(HandlerCommandMemory, ATransactionIsToldWholeOrNotAtAll)
{
    BTransactionParameters params;
    VLKTest::SweepAllocations(
        [&] {
            params = BTransactionParameters();
            return BMibHandler::BCLITransaction(console.security, console.context, BIpAddress());
        },
        [&](BMibHandler::BCLITransaction& cli) { return cli.GetParams(params); },
        [&](BMibHandler::BCLITransaction&, bool told) {
            EXPECT_EQ(told ? console.security.securityName : BString(), params.securityName);
            EXPECT_EQ(told ? console.context : BString(), params.contextName);
            EXPECT_EQ(told ? 6 : 0, params.protocolId);
            params = BTransactionParameters();
        });
}

} // namespace
} // namespace Test
} // namespace VLK
