// One map per case: CASE_n must be refused by the name that CMakeLists.txt expects;
// without a case everything compiles.
#include "Forms.h"

#include <vkmibh/maparray.h>

using namespace VLK;

constexpr SRqHndlrMapEntry Row(unsigned column, const char* name = "a")
{
    return ScalarRow<eKindInteger, &CGroup::GetInt>(column, name, eAsnInteger, eRqReadOnly);
}

VKMIBH_CONSTINIT TRqMap<3> g_map = RqMap(
    Row(1), ScalarRow<eKindInteger>(2, "b", eAsnInteger, eRqNotAccessible),
#if defined(CASE_OUT_OF_ORDER)
    Row(1)
#elif defined(CASE_TWICE)
    Row(2)
#elif defined(CASE_END)
    kRqEnd
#elif defined(CASE_NO_NAME)
    Row(3, "")
#elif defined(CASE_NO_GETTER)
    ScalarRow<eKindInteger>(3, "c", eAsnInteger, eRqReadOnly)
#elif defined(CASE_NO_SETTER)
    ScalarRow<eKindInteger, &CGroup::GetInt>(3, "c", eAsnInteger, eRqReadWrite)
#elif defined(CASE_SETTER_BEYOND_ACCESS)
    ScalarRow<eKindInteger, &CGroup::GetInt, &CGroup::SetInt>(3, "c", eAsnInteger, eRqReadOnly)
#elif defined(CASE_GETTER_BEYOND_ACCESS)
    ScalarRow<eKindInteger, &CGroup::GetInt>(3, "c", eAsnInteger, eRqNotAccessible)
#elif defined(CASE_WRONG_COUNT)
    Row(3), Row(4)
#else
    Row(3)
#endif
);
