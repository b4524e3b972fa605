// GETBULK (RFC 3416 section 4.2.3), made of get-next steps.
#pragma once

#include "host/MessageSize.h"

#include <functional>
#include <vector>

namespace VLK::host {

// Replaces every binding of the list by its successor; returns an error
// status, with the one-based index of the failing binding.
using FGetNextStep = std::function<int(BVarBindList& list, int& errorIndex)>;

// Answers `request` into `answer`: the successors of the first `nonRepeaters`
// bindings, then repetitions of the others, interleaved, until the count is
// reached, a whole repetition is at the end of the MIB, or the message is
// full. Negative counts are taken as 0. A non-zero result is an error status,
// and `errorIndex` the binding of the request that it belongs to.
int AnswerGetBulk(const FGetNextStep& step, const BVarBindList& request, int nonRepeaters,
                  int maxRepetitions, BMessageBudget& budget, std::vector<BVarBind>& answer,
                  int& errorIndex);

} // namespace VLK::host
