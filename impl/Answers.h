// The answers of Get() and NextInstance() that are exceptions.
#pragma once

#include <vkmibh/subtree.h>

namespace VLK {

inline int AnswerException(BVarBind& binding, ESnmpException exception)
{
    binding.Value().SetV2Exception(exception);
    return eSnmpNoError;
}

// NextInstance() found nothing.
inline int AnswerEnd(BVarBind& binding)
{
    binding.Value().SetV2Exception(eEndOfMibView);
    return 0;
}

// NextInstance() moved the binding on.
inline int AnswerMoved(BVarBind& binding)
{
    binding.Value().SetNull();
    return 1;
}

} // namespace VLK
