// An agent of three row-status tables that record what they are asked, and fail
// where told.
#pragma once

#include "tests/handler/RowStatusExpectation.h"
#include <vkmibh/testing/requests.h>

namespace VLK {
namespace Test {

constexpr int kForEver = 3600000;

// What all tables of one request write to, and which of their calls fail.
struct SRecord {
    Log log;
    std::map<std::string, int> failing;
};

template <class Probe>
class Recorded : public Probe {
public:
    Recorded(char name, SRecord& record)
        : Probe(("1.3.5." + std::to_string(name - 'A' + 1)).c_str()), m_name(name), m_record(record)
    {
        this->SetActivationTimeout(kForEver);
    }

protected:
    int Answer(const std::string& what, const std::string& value) override
    {
        const std::string call = m_name + (" " + what) + value;
        m_record.log.push_back(call + Outcome(what));
        const auto failing = m_record.failing.find(call);
        if (failing == m_record.failing.end())
            return 0;
        if (failing->second == kThrow)
            throw std::runtime_error(call);
        return failing->second;
    }

private:
    std::string Outcome(const std::string& what) const
    {
        const bool commits = what.find("commit 3.") == 0;
        if (!commits && what.find("undo 3.") != 0)
            return "";
        const BObjectIdentifier row = MakeOid(what.substr(what.find('.') + 1).c_str());
        return commits ? " to " + std::to_string(this->GetRowState(row))
                       : " back to " + std::to_string(this->GetRowStatusUndoValue(row));
    }

    const char m_name;
    SRecord& m_record;
};

// Three fresh tables with the given rows behind a handler.
class RowStatusAgent {
public:
    explicit RowStatusAgent(const Content& content)
        : m_a('A', m_record), m_b('B', m_record), m_e('E', m_record), m_handler(nullptr),
          m_client(m_handler)
    {
        ForAll([&](char name, auto& table) {
            m_handler.RegisterSubtreeHandler(&table);
            for (const auto& [row, was] : content) {
                if (row[0] != name)
                    continue;
                table.Row(&row[1]) = {was.status, was.name, was.level};
                if (IsInactive(name, was.status))
                    table.AddToTimeoutList(MakeOid(&row[1]));
            }
        });
    }
    ~RowStatusAgent()
    {
        ForAll([&](char, auto& table) { m_handler.UnregisterSubtreeHandler(&table); });
    }

    int Set(const std::vector<SBinding>& list, const Fails& fails, bool throwing)
    {
        BVarBindList bindings;
        for (const SBinding& binding : list) {
            BObjectSyntax value;
            if (binding.column == eProbeName)
                value.SetOctets(BString(binding.value.c_str()));
            else
                value.SetInt(binding.Int());
            const std::string place =
                std::to_string(binding.table - 'A' + 1) + "." + binding.Place();
            bindings.Append(MakeOid(("1.3.5." + place).c_str()), value);
        }
        for (const auto& [phase, position] : fails)
            m_record.failing[list[position].Call(phase)] = throwing ? kThrow : FailWith(phase);
        m_record.log.clear();
        ForAll([](char, auto& table) { table.Forget(); });
        const int status = m_client.Query(ePduSet, bindings);
        m_record.failing.clear();
        return status;
    }
    const Log& CallLog() const { return m_record.log; }
    int ErrorIndex() const { return m_client.errorIndex; }
    Content Rows()
    {
        Content content;
        ForAll([&](char name, auto& table) {
            for (const auto& [row, is] : table.rows)
                content[name + TextOf(row)] = {is.status, is.name, is.level};
        });
        return content;
    }
    // The rows that are timed, in order; who calls it ends their time.
    Log Pending()
    {
        m_record.log.clear();
        BTimer::GetInstance()->Timeout(kForEver);
        Log told;
        for (const std::string& line : m_record.log)
            told.push_back(line.substr(0, 1) + line.substr(line.rfind(' ') + 1));
        std::sort(told.begin(), told.end());
        return told;
    }
    // Rows of which a SET's notes were left.
    int States()
    {
        int states = 0;
        ForAll([&](char, auto& table) {
            for (const char* row : {"1", "2", "3"})
                states += table.GetRowState(MakeOid(row)) != 0 ||
                          table.GetRowStatusUndoValue(MakeOid(row)) != eRowNotReady;
        });
        return states;
    }

private:
    template <class Visit>
    void ForAll(Visit visit)
    {
        visit('A', m_a);
        visit('B', m_b);
        visit('E', m_e);
    }

    SRecord m_record;
    Recorded<CRowProbe> m_a;
    Recorded<CRowProbe> m_b;
    Recorded<CEntryProbe> m_e;
    BMibHandler m_handler;
    Client m_client;
};

} // namespace Test
} // namespace VLK
