// A receiver of notifications, as an agent of the operator's.
#pragma once

#include "host/Notification.h"
#include "host/access/Access.h"

#include <functional>
#include <vkmibh/agents.h>

namespace VLK::host {

// Sends the traps that the sink's notify view shows whole: the notification's own
// identifier, which snmpTrapOID.0 holds, and every object among its bindings.
// Suspended, it sends nothing; what is raised meanwhile is not sent later.
//
// Ownership: used no more once the notifier is gone; the access control outlives it.
// Threads:   SendTrap() and GetParams() on any; one at a time drives it.
// Errors:    SendTrap() tells whether the notifier has the trap, not whether it
//            arrives.
class BSinkAgent : public BAgent {
public:
    enum EResult { eDone = 0, eNotWhole = 1, eNotShown = 2 };

    // `upTime` tells sysUpTime, on any thread. Throws BHostError.
    BSinkAgent(INotifier& notifier, const STrapSink& sink, BAccess& access,
               std::function<unsigned()> upTime);

    const STrapSink& Sink() const { return m_sink; }
    // Sends nothing from here on.
    void Leave() { m_notifier.RemoveReceiver(m_receiver); }
    const SDelivery& Delivery() const { return *m_delivery; }
    unsigned NotShown() const { return m_notShown; }

    int SendTrap(const BTrap& trap, int flag) override;
    int Init(int flag) override;
    int Suspend(int flag) override;
    int Resume(int flag) override;
    int Start(int flag) override;
    int Stop(int flag) override;
    BString GetParams() override;

private:
    int PassOn(const BTrap& trap);
    bool Fill(const BTrap& trap, SNotification& notification) const;
    bool IsShown(const SNotification& notification);
    bool IsShown(const SNotification& notification, const BObjectIdentifier& name);

    INotifier& m_notifier;
    const STrapSink m_sink;
    BAccess& m_access;
    std::function<unsigned()> m_upTime;
    std::shared_ptr<SDelivery> m_delivery = std::make_shared<SDelivery>();
    std::atomic<unsigned> m_notShown{0};
    unsigned m_receiver;
};

} // namespace VLK::host
