// vkagentd with scalars that keep their requests waiting: until SIGUSR1 opens the
// gate, and again after SIGUSR2 has closed it.
//
//   1.3.6.1.4.1.32473.6.1.N.0  a GET waits; N from 1 to 8
//   1.3.6.1.4.1.32473.6.2.0    a SET waits when it is committed
//   1.3.6.1.4.1.32473.6.3.0    how many wait; -1 while the gate is open
//   1.3.6.1.4.1.32473.6.4.0    a GET takes two seconds, whatever the gate
#include "host/Agent.h"
#include "host/HostError.h"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <list>
#include <mutex>
#include <thread>
#include <vkmibh/impl.h>

using namespace VLK;

namespace {

class Gate {
public:
    void Pass()
    {
        std::unique_lock<std::mutex> lock(m_lock);
        ++m_waiting;
        m_change.wait(lock, [&] { return m_isOpen; });
        --m_waiting;
    }
    void Set(bool isOpen)
    {
        std::lock_guard<std::mutex> lock(m_lock);
        m_isOpen = isOpen;
        m_change.notify_all();
    }
    int Waiting()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        return m_isOpen ? -1 : m_waiting;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_change;
    bool m_isOpen = false;
    int m_waiting = 0;
};

// Follows the signals, which all other threads leave alone, until SIGALRM.
class CGatekeeper {
public:
    explicit CGatekeeper(Gate& gate)
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (int signalNumber : {SIGUSR1, SIGUSR2, SIGALRM})
            sigaddset(&signals, signalNumber);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        m_thread = std::thread([&gate, signals] {
            sigset_t all;
            sigfillset(&all);
            pthread_sigmask(SIG_BLOCK, &all, nullptr);
            for (int taken = 0; sigwait(&signals, &taken) == 0 && taken != SIGALRM;)
                gate.Set(taken == SIGUSR1);
        });
    }
    ~CGatekeeper()
    {
        pthread_kill(m_thread.native_handle(), SIGALRM);
        m_thread.join();
    }

private:
    std::thread m_thread;
};

class CScalar : public BMibScalarImpl {
public:
    CScalar(const char* name, const std::string& id, Gate& gate)
        : BMibScalarImpl(name, BObjectIdentifier(BString(("1.3.6.1.4.1.32473.6." + id).c_str()))),
          m_gate(gate)
    {
    }

protected:
    Gate& m_gate;
};

// One GET of each waits here, others at the scalar's lock.
class CSlowGet : public CScalar {
public:
    CSlowGet(Gate& gate, int number) : CScalar("slowGet", "1." + std::to_string(number), gate) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned, int& value)
    {
        m_gate.Pass();
        value = 1;
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
};

class CSlowSet : public CScalar {
public:
    explicit CSlowSet(Gate& gate) : CScalar("slowSet", "2", gate) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned, int& value)
    {
        value = m_value;
        return eSnmpNoError;
    }
    int OnSet(ESnmpSetOpCode op, unsigned, int value, void**)
    {
        if (op == eSetCommit) {
            m_gate.Pass();
            m_value = value;
        }
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
    int m_value = 0;
};

class CSleeper : public CScalar {
public:
    explicit CSleeper(Gate& gate) : CScalar("sleeper", "4", gate) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnGet(unsigned, int& value)
    {
        std::this_thread::sleep_for(std::chrono::seconds(2));
        value = 2;
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
};

class CWaiting : public CScalar {
public:
    explicit CWaiting(Gate& gate) : CScalar("waiting", "3", gate) {}
    SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map; }

private:
    int OnWaiting(unsigned, int& value)
    {
        value = m_gate.Waiting();
        return eSnmpNoError;
    }
    static SRqHndlrMapEntry s_map[];
};

VKMIBH_CONSTINIT SRqHndlrMapEntry CSlowGet::s_map[] = {
    ScalarRow<eKindInteger, &CSlowGet::OnGet>(1, "slowGet", eAsnInteger, eRqReadOnly), kRqEnd};
VKMIBH_CONSTINIT SRqHndlrMapEntry CSlowSet::s_map[] = {
    ScalarRow<eKindInteger, &CSlowSet::OnGet, &CSlowSet::OnSet>(1, "slowSet", eAsnInteger,
                                                                eRqReadWrite),
    kRqEnd};
VKMIBH_CONSTINIT SRqHndlrMapEntry CSleeper::s_map[] = {
    ScalarRow<eKindInteger, &CSleeper::OnGet>(1, "sleeper", eAsnInteger, eRqReadOnly), kRqEnd};
VKMIBH_CONSTINIT SRqHndlrMapEntry CWaiting::s_map[] = {
    ScalarRow<eKindInteger, &CWaiting::OnWaiting>(1, "waiting", eAsnInteger, eRqReadOnly), kRqEnd};
} // namespace

int main(int argc, char** argv)
{
    Gate gate;
    CGatekeeper keeper(gate);
    std::list<CSlowGet> slowGets;
    CSlowSet slowSet(gate);
    CWaiting waiting(gate);
    CSleeper sleeper(gate);
    host::SOptions options;
    if (std::optional<int> status = host::ParseOptions(argc, argv, options, std::cout))
        return *status;
    return host::RunAgent(options, [&](IMIBHandler& handler, ITrapSender&, INonVolatile*) {
        std::vector<CScalar*> scalars{&slowSet, &waiting, &sleeper};
        for (int i = 1; i <= 8; ++i)
            scalars.push_back(&slowGets.emplace_back(gate, i));
        for (CScalar* scalar : scalars) {
            scalar->Initialize();
            handler.RegisterSubtreeHandler(scalar);
        }
    });
}
