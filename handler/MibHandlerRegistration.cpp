// Registration: groups, single subtree handlers and the system group.
#include <vkmibh/handler.h>
#include <vkmibh/system.h>

#include "foundation/HostCall.h"

#include <new>

namespace VLK {

namespace {

BMibImpl* AsImplementation(BMibSubtreeHandler* handler)
{
    const unsigned kind = handler->ImplKind();
    return kind >= eImplBase && kind <= eImplLastKind ? dynamic_cast<BMibImpl*>(handler) : nullptr;
}

void RegisterSystemImpl(BMibTree& tree, BMibImpl* impl)
{
    if (!impl)
        return;
    impl->Initialize();
    if (tree.Register(impl))
        impl->ResolveConstraints();
}

// A module that throws while its constraints are resolved is not left in the
// tree, since its caller takes it for refused.
bool RegisterResolved(BMibTree& tree, BMibSubtreeHandler* handler)
{
    if (!tree.Register(handler))
        return false;
    BMibImpl* const impl = AsImplementation(handler);
    const bool resolved = !impl || HostCall(
                                       [&] {
                                           impl->ResolveConstraints();
                                           return true;
                                       },
                                       false);
    if (!resolved)
        tree.Unregister(handler);
    return resolved;
}

bool RegisterImplementations(BMibTree& tree, BMibImplGroup& group)
{
    for (int i = 0; i < group.GetNumImpls(); ++i) {
        BMibImpl* impl = group.GetImplAt(i);
        if (!impl)
            return false;
        if (!tree.Register(impl) || !AsImplementation(impl))
            continue;
        impl->SetExtrenalTCConstraints(group.GetTCConstraintMap());
        impl->ResolveConstraints();
    }
    return true;
}

} // namespace

void BMibHandler::RegisterSystemGroup()
{
    if (m_systemImpl || !m_system || !m_tree)
        return;
    m_systemImpl = new (std::nothrow) CSystemV2(*m_system);
    m_sysORImpl = new (std::nothrow) CSysORTableV2(*m_system);
    RegisterSystemImpl(*m_tree, m_systemImpl);
    RegisterSystemImpl(*m_tree, m_sysORImpl);
}

bool BMibHandler::RegisterGroup(BMibImplGroup* group)
{
    if (!group || !m_tree)
        return false;
    VKDbgModuleTraceClass(eTraceMibHandler, "RegisterGroup %s", group->Name().c_str());
    const TWriteLock writer(m_registrationLock);
    if (!writer.Granted())
        return false;
    return HostCall([&] { return RegisterImplementations(*m_tree, *group); }, false);
}

bool BMibHandler::RegisterSubtreeHandler(BMibSubtreeHandler* handler)
{
    if (!handler || !m_tree)
        return false;
    VKDbgModuleTraceClass(eTraceMibHandler, "RegisterSubtreeHandler %s",
                          handler->Oid().ToString().c_str());
    const TWriteLock writer(m_registrationLock);
    if (!writer.Granted())
        return false;
    return RegisterResolved(*m_tree, handler);
}

int BMibHandler::UnregisterSubtreeHandler(BMibSubtreeHandler* handler)
{
    if (!handler || !m_tree)
        return 0;
    VKDbgModuleTraceClass(eTraceMibHandler, "UnregisterSubtreeHandler %s",
                          handler->Oid().ToString().c_str());
    BTimer* timer = BTimer::GetInstance();
    if (timer)
        timer->Unsubscribe(handler);
    int removed = 0;
    {
        const TWriteLock writer(m_registrationLock);
        if (writer.Granted())
            removed = HostCall([&] { return m_tree->Unregister(handler); }, 0);
    }
    // A request that was still running may have subscribed it again.
    if (timer)
        timer->Unsubscribe(handler);
    return removed;
}

bool BMibHandler::UnregisterGroup(BMibImplGroup* group)
{
    if (!group)
        return false;
    VKDbgModuleTraceClass(eTraceMibHandler, "UnregisterGroup %s", group->Name().c_str());
    return HostCall(
        [&] {
            bool all = true;
            for (int i = 0; i < group->GetNumImpls(); ++i) {
                BMibImpl* impl = group->GetImplAt(i);
                if (!impl || !UnregisterSubtreeHandler(impl))
                    all = false;
            }
            return all;
        },
        false);
}

} // namespace VLK
