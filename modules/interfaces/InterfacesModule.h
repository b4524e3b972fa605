// IF-MIB (RFC 2863), without ifStackTable and ifRcvAddressTable.
#pragma once

#include "modules/interfaces/IfTables.h"
#include "modules/interfaces/KernelInterfaces.h"
#include "modules/interfaces/LinkWatch.h"

namespace VLK::modules {

struct SInterfacesOptions {
    // Milliseconds that an answer of the kernel counts for; 0: every request asks anew.
    unsigned timeToLive = 1000;
};

// The interfaces of the host, and notifications when they come up or go down.
//
//   CInterfacesModule interfaces(traps, store);
//   handler.RegisterGroup(&interfaces);
//   interfaces.Init();               // watches from here on
//
// Ownership: of neither sender nor store, which outlive it; the store may be null,
//            and what managers set is not kept then.
// Threads:   requests as BMibTableImpl; owns a thread from Init() to Cleanup() or its
//            end, on which it raises notifications.
// Errors:    the constructors throw std::bad_alloc. A kernel that cannot be watched
//            is told by WatchProblem(): the rest goes on without notifications and
//            without the objects that tell of times.
class CInterfacesModule : public BMibImplGroup {
public:
    CInterfacesModule(ITrapSender& traps, INonVolatile* store,
                      const SInterfacesOptions& options = {});
    // Of interfaces that somebody else tells, who tells History() of their changes too
    // and raises what it answers; nothing is watched.
    CInterfacesModule(IInterfaces& interfaces, ITrapSender& traps, INonVolatile* store,
                      const SInterfacesOptions& options, const FUptime& upTime);
    ~CInterfacesModule() override;

    // On any thread, also while requests run.
    void SetTimeToLive(unsigned timeToLive) { m_snapshots.SetTimeToLive(timeToLive); }
    // Why the interfaces are not watched; empty when they are, or need not be.
    const std::string& WatchProblem() const { return m_watchProblem; }
    CLinkHistory& History() { return m_history; }
    CLinkTraps& Traps() { return m_traps; }

    int Init() override;
    void Cleanup() override;
    int GetNumImpls() override { return 4; }
    BMibImpl* GetImplAt(int index) override;

private:
    CKernelInterfaces m_kernel;
    CLinkHistory m_history;
    CLinkTrapEnables m_enables;
    CLinkTraps m_traps;
    CSnapshots m_snapshots;
    std::unique_ptr<CLinkWatch> m_watch; // null: somebody else watches
    std::string m_watchProblem;
    CIfNumber m_number;
    CIfTable m_table;
    CIfXTable m_xTable;
    CIfTableLastChange m_lastChange;
};

} // namespace VLK::modules
