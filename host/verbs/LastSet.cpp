#include "host/verbs/LastSet.h"

#include "host/RequestTransaction.h"

#include <algorithm>

namespace VLK::host {

namespace {

void KeepBinding(const BVarBind& from, SSetBinding& to)
{
    const BObjectSyntax& value = from.Value();
    const BOctetString& octets = value.Octets();
    to.cutOctets =
        octets.Length() > SLastSet::kMostOctets ? octets.Length() - SLastSet::kMostOctets : 0;
    if (to.cutOctets == 0) {
        to.binding = from;
        return;
    }
    to.binding.Set(from.Name());
    const BOctetString begin(SLastSet::kMostOctets, octets.Data());
    if (value.Syntax() == eAsnOpaque)
        to.binding.Value().SetOpaque(begin);
    else
        to.binding.Value().SetOctets(begin);
}

void KeepAsker(SLastSet& last, const BSecurityParams& security, const BString& context)
{
    const SRequest* request = BRequestTransaction::OfThisThread();
    last.isConsole = !request;
    last.security.securityModel = security.securityModel;
    last.security.securityLevel = security.securityLevel;
    last.context = context;
    if (request) {
        last.protocol = request->protocol;
        last.remote = request->remote;
    }
    const BString& name = security.securityName;
    last.isNameSecret =
        request && request->protocol != eSnmpV3 &&
        request->community.compare(0, request->community.npos, name.c_str(), name.length()) == 0;
    if (last.isNameSecret)
        last.security.securityName.clear();
    else
        last.security.securityName = name;
}

} // namespace

void BLastSet::Keep(const BSetTrace& trace, std::chrono::system_clock::time_point at,
                    const BSecurityParams& security, const BString& context,
                    const BVarBindList& list, int status, int index, EVacmAnswer refusal)
{
    const BLock lock(m_lock);
    m_last.at = at;
    KeepAsker(m_last, security, context);
    m_last.count = list.Count();
    m_last.kept = std::min(m_last.count, SLastSet::kMostBindings);
    for (unsigned i = 0; i < m_last.kept; ++i)
        KeepBinding(list[static_cast<int>(i)], m_last.bindings[i]);
    for (int phase = 0; phase < ePhases; ++phase)
        trace.Phase(static_cast<ESetPhase>(phase))
            .CopyTo(m_last.phases[static_cast<size_t>(phase)]);
    m_last.save = trace.Save();
    m_last.status = status;
    m_last.index = index;
    m_last.refusal = refusal;
    m_isThere = true;
}

std::optional<SLastSet> BLastSet::Get() const
{
    const BLock lock(m_lock);
    if (!m_isThere)
        return std::nullopt;
    return m_last;
}

} // namespace VLK::host
