// A manager that works on one example with the SNMP command-line tools. Names are
// relative to the example's own identifier.
#pragma once

#include "RunningExample.h"

#include <chrono>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <thread>

class Manager {
public:
    Manager(const std::string& example, const std::string& root, const std::string& version,
            const Arguments& arguments = {})
        : m_root("." + root), m_version(version), m_example(example, arguments)
    {
        EXPECT_TRUE(m_example.Server().IsReady()) << m_example.Server().FirstLine();
    }

    bool IsV1() const { return m_version == "1"; }
    RunningExample& Example() { return m_example; }

    // "5.7 i 4; 2.7 s side gate" sets two objects; a name with a leading full stop is
    // whole. Returns "" when it was granted, or the reason and the object: "wrongValue
    // 5.7". SNMPv1 reasons are returned by the SNMPv2 name that is expected: see
    // Refused().
    std::string Set(const std::string& bindings)
    {
        Arguments words;
        std::istringstream list(bindings);
        for (std::string binding; std::getline(list, binding, ';');) {
            std::istringstream text(binding);
            std::string name, type, value;
            text >> name >> type >> std::ws;
            std::getline(text, value);
            words.insert(words.end(), {Whole(name), type, value});
        }
        const Outcome outcome = Ask("snmpset", "private", words);
        return outcome.status == 0 ? "" : ReasonIn(outcome.output);
    }

    // What Set() returns for a refusal, given its SNMPv2 reason and object.
    std::string Refused(const std::string& reason, const std::string& object) const
    {
        static const std::map<std::string, std::string> v1{
            {"inconsistentValue", "badValue"},  {"wrongValue", "badValue"},
            {"wrongType", "badValue"},          {"wrongLength", "badValue"},
            {"inconsistentName", "noSuchName"}, {"noCreation", "noSuchName"},
            {"notWritable", "noSuchName"},      {"genError", "genError"}};
        return (IsV1() ? v1.at(reason) : reason) + " " + object;
    }

    // The value as it is printed, "none" when there is none.
    std::string Get(const std::string& name)
    {
        const Outcome outcome = Ask("snmpget", "public", {Whole(name)}, {"-Oqv"});
        const bool none = outcome.status == 2 || outcome.output.find("No Such ") == 0;
        return none ? "none" : outcome.output.substr(0, outcome.output.find('\n'));
    }

    // Whether an instance that is there, or was until now, goes by itself.
    bool IsGoneSoon(const std::string& name)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (Get(name) != "none") {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return true;
    }

    // "name value" of each instance below a name, "" for the example's root.
    Arguments Walk(const std::string& below = "") { return WalkWith("snmpwalk", below); }
    Arguments BulkWalk(const std::string& below, const std::string& repetitions)
    {
        return WalkWith("snmpbulkwalk", below, {"-Cr" + repetitions});
    }

    // The answers to one GETNEXT of several names, as Walk() has them.
    Arguments Next(const Arguments& names)
    {
        Arguments whole;
        for (const std::string& name : names)
            whole.push_back(Whole(name));
        return Relative(Ask("snmpgetnext", "public", whole, {"-Onq"}).output);
    }

    Outcome Ask(const std::string& tool, const std::string& community, const Arguments& words,
                const Arguments& options = {})
    {
        return m_example.Server().Ask(tool, m_version, community, words, options);
    }

    std::string Whole(const std::string& name) const
    {
        return name.empty() ? m_root : name[0] == '.' ? name : m_root + "." + name;
    }

private:
    // What follows the word up to the end of its line.
    static std::string After(const std::string& text, const std::string& word)
    {
        const size_t at = text.find(word);
        if (at == text.npos)
            return "no '" + word + "' in: " + text;
        const size_t from = at + word.size();
        return text.substr(from, text.find('\n', from) - from);
    }

    std::string Short(const std::string& name) const
    {
        const bool ours = name.compare(0, m_root.size() + 1, m_root + ".") == 0;
        return ours ? name.substr(m_root.size() + 1) : name;
    }

    // "Reason: wrongValue (text)", or "Reason: (badValue) text" in SNMPv1.
    std::string ReasonIn(const std::string& output) const
    {
        std::string reason = After(output, "Reason: ");
        reason = reason[0] == '(' ? reason.substr(1, reason.find(')') - 1)
                                  : reason.substr(0, reason.find(' '));
        return reason + " " + Short(After(output, "Failed object: "));
    }

    Arguments Relative(const std::string& output) const
    {
        Arguments lines;
        std::istringstream text(output);
        for (std::string line; std::getline(text, line);)
            lines.push_back(Short(line));
        return lines;
    }

    Arguments WalkWith(const std::string& tool, const std::string& below,
                       const Arguments& options = {})
    {
        Arguments all{"-Onq"};
        all.insert(all.end(), options.begin(), options.end());
        Arguments lines = Relative(Ask(tool, "public", {Whole(below)}, all).output);
        // The tools tell when the walk came to the end of all there is; where it found
        // nothing they ask for the name itself.
        for (const char* end : {"End of MIB", "No more variables left", "No Such "}) {
            if (!lines.empty() && lines.back().find(end) != std::string::npos)
                lines.pop_back();
        }
        return lines;
    }

    const std::string m_root;
    const std::string m_version;
    RunningExample m_example;
};

// A test for each version of the protocol.
#define VERSIONS(suite)                                                                            \
    INSTANTIATE_TEST_SUITE_P(Versions, suite, testing::Values("1", "2c"),                          \
                             [](const auto& test) { return std::string("V") + test.param; })
