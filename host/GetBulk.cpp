#include "host/GetBulk.h"

#include <algorithm>
#include <vkmibh/subtree.h>

namespace VLK::host {

namespace {

class BRepeaters {
public:
    BRepeaters(const BVarBindList& request, int first)
    {
        for (unsigned i = static_cast<unsigned>(first); i < request.Count(); ++i)
            m_current.emplace_back(request[static_cast<int>(i)].Name());
    }

    // One repetition: those at the end stay there and are not asked again.
    // `position` is the zero-based repeater that failed.
    int Step(const FGetNextStep& step, int& position)
    {
        BVarBindList live;
        std::vector<size_t> places;
        for (size_t i = 0; i < m_current.size(); ++i) {
            if (IsAtEnd(m_current[i]))
                continue;
            if (!live.Append(m_current[i].Name()))
                return eSnmpGenErr;
            places.push_back(i);
        }
        int index = 0;
        if (int status = step(live, index)) {
            bool known = index >= 1 && static_cast<size_t>(index) <= places.size();
            position = known ? static_cast<int>(places[static_cast<size_t>(index) - 1]) : 0;
            return status;
        }
        for (size_t i = 0; i < places.size(); ++i)
            m_current[places[i]] = std::move(live[static_cast<int>(i)]);
        return eSnmpNoError;
    }

    bool AllAtEnd() const { return std::all_of(m_current.begin(), m_current.end(), IsAtEnd); }
    const std::vector<BVarBind>& Current() const { return m_current; }

private:
    static bool IsAtEnd(const BVarBind& binding)
    {
        return binding.Value().Syntax() == eEndOfMibView;
    }

    std::vector<BVarBind> m_current;
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

    BRepeaters repeaters(request, single);
    for (int repetition = 0; repetition < maxRepetitions && !repeaters.AllAtEnd(); ++repetition) {
        int position = 0;
        if (int status = repeaters.Step(step, position)) {
            errorIndex = single + position + 1;
            return status;
        }
        for (const BVarBind& binding : repeaters.Current()) {
            if (!Put(binding, budget, answer))
                return eSnmpNoError;
        }
    }
    return eSnmpNoError;
}

} // namespace VLK::host
