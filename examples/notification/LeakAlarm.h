#pragma once

#include <atomic>
#include <string>
#include <vkmibh/impl.h>
#include <vkmibh/traps.h>

namespace VLK {
class ITrapSender;
}

namespace VLK::examples {

// Looks once a second whether there is a file, which another program makes when it
// finds a leak. leakState.0 says so; when it changes, leakChanged is sent with it.
class CLeakAlarm : public BMibScalarGroupImpl {
public:
    CLeakAlarm(const std::string& path, ITrapSender& traps);
    ~CLeakAlarm() override;

    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }
    void Watch();
    void OnTimeout(BTimeInterval& interval) override;

private:
    enum EState : int { eStateLeaking = 1, eStateDry = 2 };

    EState Look() const;
    int OnGet_State(unsigned id, EState& value);

    static SRqHndlrMapEntry s_map[];

    const std::string m_path;
    ITrapSender& m_traps;
    std::atomic<EState> m_state{eStateDry};
};

// What is registered with the agent.
class CLeakModule : public BMibImplGroup {
public:
    CLeakModule(const std::string& path, ITrapSender& traps) : m_alarm(path, traps) {}
    int Init() override;
    int GetNumImpls() override { return 1; }
    BMibImpl* GetImplAt(int) override { return &m_alarm; }

private:
    CLeakAlarm m_alarm;
};

} // namespace VLK::examples
