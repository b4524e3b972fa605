// One map per case: CASE_n must be refused by the name that CMakeLists.txt expects;
// without a case everything compiles.
#include "Forms.h"

#include <vkmibh/maparray.h>

using namespace VLK;

constexpr SRqHndlrMapEntry Row(unsigned column, const char* name = "a")
{
    return ScalarRow<eKindInteger, &CGroup::GetInt>(column, name, eAsnInteger, eRqReadOnly);
}

#if defined(CASE_OUT_OF_ORDER)
#define THIRD Row(1)
#elif defined(CASE_TWICE)
#define THIRD Row(2)
#elif defined(CASE_END)
#define THIRD kRqEnd
#elif defined(CASE_NO_NAME)
#define THIRD Row(3, "")
#elif defined(CASE_NO_GETTER)
#define THIRD ScalarRow<eKindInteger>(3, "c", eAsnInteger, eRqReadOnly)
#elif defined(CASE_NO_SETTER)
#define THIRD ScalarRow<eKindInteger, &CGroup::GetInt>(3, "c", eAsnInteger, eRqReadWrite)
#elif defined(CASE_SETTER_BEYOND_ACCESS)
#define THIRD                                                                                      \
    ScalarRow<eKindInteger, &CGroup::GetInt, &CGroup::SetInt>(3, "c", eAsnInteger, eRqReadOnly)
#elif defined(CASE_GETTER_BEYOND_ACCESS)
#define THIRD ScalarRow<eKindInteger, &CGroup::GetInt>(3, "c", eAsnInteger, eRqNotAccessible)
#elif defined(CASE_WRONG_COUNT)
#define THIRD Row(3), Row(4)
#else
#define THIRD Row(3)
#endif

VKMIBH_CONSTINIT TRqMap<3> g_map =
    RqMap(Row(1), ScalarRow<eKindInteger>(2, "b", eAsnInteger, eRqNotAccessible), THIRD);
