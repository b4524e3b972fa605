// Random argument lists: a request runs when they are right and not otherwise,
// and what is printed follows from the arguments.
#include "tests/support/CommandConsole.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace VLK {
namespace Test {
namespace {

using Words = std::vector<std::string>;

// Answers every request at once and counts them.
class CountingQuery : public BMibHandler {
public:
    using BMibHandler::BMibHandler;
    int Query(int pduType, int, const BSecurityParams&, const BString&, BVarBindList& list,
              int& errorIndex) override
    {
        ++requests;
        lastPduType = pduType;
        lastCount = list.Count();
        errorIndex = status ? 7 : 0;
        return status;
    }
    int requests = 0;
    int lastPduType = 0;
    unsigned lastCount = 0;
    int status = 0;
};

const char* const kGoodNames[] = {"1.3.6.1", ".1.3", "1.3.", "1", "1.3.4294967295", " 1.3 ", "."};
const char* const kBadNames[] = {"", "x", "1..3", "1.3.x", "1.12345678901", "..1"};
const char* const kGoodTags[] = {"2", "4", "6", "64", "65", "66", "67", "68", "70"};
const char* const kBadTags[] = {"", "0", "1", "5", "x", "69", "128", "2147483648"};
const char* const kValues[] = {"1.3.6.1", "10.1.2.3", "41:42", "text", "5", "", "1..2.3", "-"};
const char* const kSwitches[] = {"-a10.1.2.3", "-a", "-abad", "-x", "-5", "--", "-A1.1.1.1"};

template <std::size_t Size>
const char* Pick(std::mt19937& random, const char* const (&words)[Size])
{
    return words[random() % Size];
}

// Mostly right, so that long lists are right now and then.
template <std::size_t Good, std::size_t Bad>
const char* PickMostly(std::mt19937& random, const char* const (&good)[Good],
                       const char* const (&bad)[Bad])
{
    return random() % 12 ? Pick(random, good) : Pick(random, bad);
}

Words RandomWords(std::mt19937& random, bool triples)
{
    Words words;
    const unsigned count = random() % 6;
    for (unsigned i = 0; i < count; ++i) {
        if (random() % 4 == 0)
            words.push_back(Pick(random, kSwitches));
        words.push_back(PickMostly(random, kGoodNames, kBadNames));
        if (!triples)
            continue;
        words.push_back(PickMostly(random, kGoodTags, kBadTags));
        words.push_back(Pick(random, kValues));
    }
    if (!words.empty() && random() % 8 == 0)
        words.pop_back();
    return words;
}

bool OneOf(const std::string& word, const std::vector<const char*>& words)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsGoodName(const std::string& word)
{
    return OneOf(word, {std::begin(kGoodNames), std::end(kGoodNames)}) || word == "10.1.2.3" ||
           word == "5";
}

bool IsSwitchWord(const std::string& word) { return word.size() > 1 && word[0] == '-'; }

Words PlainOf(const Words& words)
{
    Words plain;
    std::copy_if(words.begin(), words.end(), std::back_inserter(plain),
                 [](const std::string& word) { return !IsSwitchWord(word); });
    return plain;
}

// What is wrong with a triple that starts at `at`; empty when nothing is.
std::string WrongTriple(const Words& plain, std::size_t at)
{
    const std::string& tag = plain[at + 1];
    const std::string& value = plain[at + 2];
    if (!IsGoodName(plain[at]))
        return "invalid oid '" + plain[at] + "'";
    if (!OneOf(tag, {std::begin(kGoodTags), std::end(kGoodTags)}))
        return "invalid tag '" + tag + "'";
    if (tag == "6" && !IsGoodName(value))
        return "invalid oid '" + value + "'";
    if (tag == "64" && !OneOf(value, {"1.3.6.1", "10.1.2.3", "1..2.3"}))
        return "invalid ip address '" + value + "'";
    return "";
}

std::string Wrong(const Words& words, bool triples)
{
    const Words plain = PlainOf(words);
    const std::string usage =
        triples ? "set <oid> <tag> <value> [<oid> <tag> <value> ...]" : "get <oid> [<oid> ...]";
    if (plain.empty())
        return "argument(s) required.\nUsage " + usage + " [-aIpAddress]";
    if (triples && plain.size() % 3)
        return "invalid argument(s)\nUsage " + usage + " [-aIpAddress]";
    for (std::size_t i = 0; i < plain.size(); i += triples ? 3 : 1) {
        std::string wrong = triples                ? WrongTriple(plain, i)
                            : IsGoodName(plain[i]) ? ""
                                                   : "invalid oid '" + plain[i] + "'";
        if (!wrong.empty())
            return wrong;
    }
    return "";
}

class HandlerCommandProperties : public testing::Test {
protected:
    HandlerCommandProperties() : handler(nullptr), console(handler) {}
    // What the same words were to give, from the request on.
    void Check(const std::string& command, const Words& words, const std::string& wrong)
    {
        const bool triples = command == "set";
        const int before = handler.requests;
        const Words texts = console.Run(command, words);
        if (!wrong.empty()) {
            EXPECT_EQ(Words{command + ": " + wrong}, texts);
            EXPECT_EQ(before, handler.requests);
            return;
        }
        const std::size_t bindings = PlainOf(words).size() / (triples ? 3 : 1);
        ASSERT_EQ(before + 1, handler.requests);
        EXPECT_EQ(triples ? 163 : 160, handler.lastPduType);
        EXPECT_EQ(bindings, handler.lastCount);
        if (handler.status)
            EXPECT_EQ(Words{"snmpErr: badValue at index 7"}, texts);
        else
            EXPECT_EQ(bindings, texts.size());
    }

    CountingQuery handler;
    CommandConsole console;
};

TEST_F(HandlerCommandProperties, ARequestRunsWhenTheArgumentsAreRightAndNotOtherwise)
{
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    int wrongs = 0;
    for (int round = 0; round < 5000; ++round) {
        const bool triples = random() % 2 == 0;
        const Words words = RandomWords(random, triples);
        handler.status = random() % 3 ? 0 : 3;
        const std::string wrong = Wrong(words, triples);
        wrongs += !wrong.empty();
        Check(triples ? "set" : "get", words, wrong);
        ASSERT_FALSE(HasFailure())
            << "seed " << seed << ", round " << round << ": " << testing::PrintToString(words);
    }
    EXPECT_GT(wrongs, 500);
    EXPECT_LT(wrongs, 4500);
}

TEST_F(HandlerCommandProperties, AnyBytesAreTakenAsArguments)
{
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    const char alphabet[] = "0123456789.:-+a \t\0\xff\x80,xA";
    const char* const commands[] = {"get", "getnext", "set", "none"};
    for (int round = 0; round < 5000; ++round) {
        Words words(random() % 7);
        for (std::string& word : words) {
            const unsigned length = random() % 40 ? random() % 6 : random() % 3000;
            for (unsigned i = 0; i < length; ++i)
                word += alphabet[random() % (sizeof alphabet - 1)];
        }
        const int before = handler.requests;
        const Words texts = console.Run(Pick(random, commands), words);
        EXPECT_LE(handler.requests, before + 1);
        EXPECT_FALSE(texts.empty()) << "a command always says something";
        ASSERT_FALSE(HasFailure())
            << "seed " << seed << ", round " << round << ": " << testing::PrintToString(words);
    }
    EXPECT_GT(handler.requests, 0);
}

} // namespace
} // namespace Test
} // namespace VLK
