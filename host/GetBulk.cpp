#include "host/GetBulk.h"

#include <algorithm>
#include <vkmibh/subtree.h>

namespace VLK::host {

namespace {

constexpr int kRoomAtFirst = 64; // bindings of an answer

bool IsAtEnd(const BVarBind& binding) { return binding.Value().Syntax() == eEndOfMibView; }

// Those that are not at the end are one list all the time, which each step replaces.
class BRepeaters {
public:
    // False without memory.
    bool Begin(const BVarBindList& request, int first)
    {
        m_ended.resize(request.Count() - static_cast<unsigned>(first));
        if (!m_live.Reserve(static_cast<unsigned>(m_ended.size())))
            return false;
        for (size_t i = 0; i < m_ended.size(); ++i) {
            if (!m_live.Append(request[first + static_cast<int>(i)].Name()))
                return false;
            m_places.push_back(i);
        }
        return true;
    }

    // One repetition: those at the end stay there and are not asked again.
    // `position` is the zero-based repeater that failed.
    int Step(const FGetNextStep& step, int& position)
    {
        int index = 0;
        const int status = step(m_live, index);
        const bool isKnown = index >= 1 && static_cast<size_t>(index) <= m_places.size();
        position = isKnown ? static_cast<int>(m_places[static_cast<size_t>(index) - 1]) : 0;
        return status;
    }

    // What the step has found goes into the answer, as far as there is room; the names
    // stay, for the next one. An error status, or noError.
    int Put(BMessageBudget& budget, std::vector<BVarBind>& answer, bool& isFull)
    {
        size_t live = 0;
        size_t kept = 0; // of those that the next step asks for
        for (size_t place = 0; place < m_ended.size(); ++place) {
            const bool isLive = live < m_places.size() && m_places[live] == place;
            BVarBind& found = isLive ? m_live[static_cast<int>(live)] : m_ended[place];
            isFull = !budget.Take(found);
            if (isFull)
                return eSnmpNoError;
            live += isLive ? 1 : 0;
            if (!isLive) {
                answer.push_back(found);
            } else if (IsAtEnd(found)) {
                answer.push_back(found);
                m_ended[place] = std::move(found);
            } else {
                answer.push_back(std::move(found));
                if (!Keep(kept++, place, answer.back().Name()))
                    return eSnmpGenErr;
            }
        }
        while (m_live.Count() > kept)
            m_live.Remove(static_cast<int>(m_live.Count()) - 1);
        m_places.resize(kept);
        return eSnmpNoError;
    }

    bool AllAtEnd() const { return m_places.empty(); }

private:
    // Where a binding has been moved from. False without memory.
    bool Keep(size_t index, size_t place, const BObjectIdentifier& name)
    {
        BVarBind& next = m_live[static_cast<int>(index)];
        next.Value().SetNull();
        m_places[index] = place;
        return next.Name().Set(name);
    }

    BVarBindList m_live;
    std::vector<size_t> m_places; // among the repeaters, of each in that list
    std::vector<BVarBind> m_ended;
};

bool Put(const BVarBind& binding, BMessageBudget& budget, std::vector<BVarBind>& answer)
{
    if (!budget.Take(binding))
        return false;
    answer.push_back(binding);
    return true;
}

} // namespace

int AnswerGetBulk(const FGetNextStep& step, const BVarBindList& request, int nonRepeaters,
                  int maxRepetitions, BMessageBudget& budget, std::vector<BVarBind>& answer,
                  int& errorIndex)
{
    int count = static_cast<int>(request.Count());
    int single = std::clamp(nonRepeaters, 0, count);
    BVarBindList singles;
    if (!singles.Reserve(static_cast<unsigned>(single)))
        return eSnmpGenErr;
    for (int i = 0; i < single; ++i) {
        if (!singles.Append(request[i].Name()))
            return eSnmpGenErr;
    }
    if (single) {
        if (int status = step(singles, errorIndex))
            return status;
    }
    for (int i = 0; i < single; ++i) {
        if (!Put(singles[i], budget, answer))
            return eSnmpNoError;
    }
    if (single == count)
        return eSnmpNoError;

    BRepeaters repeaters;
    if (!repeaters.Begin(request, single))
        return eSnmpGenErr;
    const auto most = static_cast<size_t>(std::clamp(maxRepetitions, 0, kRoomAtFirst));
    answer.reserve(answer.size() +
                   std::min<size_t>(most * static_cast<size_t>(count - single), kRoomAtFirst));
    bool isFull = false;
    for (int repetition = 0; repetition < maxRepetitions && !repeaters.AllAtEnd() && !isFull;
         ++repetition) {
        int position = 0;
        int status = repeaters.Step(step, position);
        if (status == eSnmpNoError)
            status = repeaters.Put(budget, answer, isFull);
        if (status != eSnmpNoError) {
            errorIndex = single + position + 1;
            return status;
        }
    }
    return eSnmpNoError;
}

} // namespace VLK::host
