// An agent that tells how it was called.
#pragma once

#include <vkmibh/agents.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace VLK {
namespace Test {

class RecordingAgent : public BAgent {
public:
    using Calls = std::vector<std::string>;

    // Several agents may note their calls in one list.
    RecordingAgent(std::string name, Calls& calls) : m_name(std::move(name)), m_calls(calls) {}

    int SendTrap(const BTrap& trap, int flag) override
    {
        lastTrap = &trap;
        return Note("trap", flag);
    }
    int Init(int flag) override { return Note("init", flag); }
    int Suspend(int flag) override { return Note("suspend", flag); }
    int Resume(int flag) override { return Note("resume", flag); }
    int Start(int flag) override { return Note("start", flag); }
    int Stop(int flag) override { return Note("stop", flag); }
    BString GetParams() override
    {
        Note("params", 0);
        return BString(params.data(), static_cast<unsigned>(params.size()));
    }

    int status = 0; // of every operation
    bool throws = false;
    std::string params;
    const BTrap* lastTrap = nullptr;

private:
    int Note(const char* operation, int flag)
    {
        m_calls.push_back(operation + (" " + m_name) + (flag ? " with a flag" : ""));
        if (throws)
            throw std::runtime_error(m_name);
        return status;
    }

    const std::string m_name;
    Calls& m_calls;
};

} // namespace Test
} // namespace VLK
