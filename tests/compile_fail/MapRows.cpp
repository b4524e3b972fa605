// One row per case: CASE_n must be refused with the message that CMakeLists.txt
// expects; without a case everything compiles.
#include "Forms.h"

using namespace VLK;

VKMIBH_CONSTINIT SRqHndlrMapEntry g_map[] = {
    ScalarRow<eKindInteger, &CGroup::GetInt, &CGroup::SetInt>(1, "a", eAsnInteger, eRqReadWrite),
    ScalarRow<eKindDisplayString, &CGroup::GetText, &CGroup::SetText>(2, "b", eAsnOctetString,
                                                                      eRqReadWrite),
    ScalarRow<eKindInteger, &CRow::GetInt>(3, "c", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindInteger, &CTable::GetInt, &CTable::SetInt>(4, "d", eAsnInteger, eRqReadWrite),
    ColumnRow<eKindEnumerated, &CTable::GetColor>(5, "e", eAsnInteger, eRqReadOnly),
    ColumnRow<eKindRowStatus, &CTable::GetStatus, &CTable::SetStatus>(6, "f", eAsnInteger,
                                                                      eRqReadCreate),
    ScalarRow<eKindEnumerated, &CGroup::GetScoped>(7, "g", eAsnInteger, eRqReadOnly),
#if defined(CASE_VALUE_OF_GETTER)
    ScalarRow<eKindInteger, &CGroup::GetText>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_VALUE_OF_SETTER)
    ScalarRow<eKindInteger, &CGroup::GetInt, &CGroup::SetText>(9, "x", eAsnInteger, eRqReadWrite),
#elif defined(CASE_ENUMERATION_AS_INTEGER)
    ColumnRow<eKindInteger, &CTable::GetColor>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_ENUMERATION_OF_UNKNOWN_RANGE)
    ScalarRow<eKindEnumerated, &CGroup::GetLoose>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_ENUMERATION_TOO_NARROW)
    ScalarRow<eKindEnumerated, nullptr, &CGroup::SetNarrow>(9, "x", eAsnInteger, eRqWriteOnly),
#elif defined(CASE_SIGNED_AS_UNSIGNED)
    ScalarRow<eKindUnsigned, &CGroup::GetInt>(9, "x", eAsnGauge32, eRqReadOnly),
#elif defined(CASE_CONST_VALUE)
    ScalarRow<eKindInteger, &CGroup::GetConst>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_VOID_RESULT)
    ScalarRow<eKindInteger, &CGroup::GetVoid>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_SETTER_TAKES_REFERENCE)
    ScalarRow<eKindInteger, &CGroup::GetInt, &CGroup::SetReference>(9, "x", eAsnInteger,
                                                                    eRqReadWrite),
#elif defined(CASE_SETTER_WITHOUT_SLOT)
    ScalarRow<eKindInteger, &CGroup::GetInt, &CGroup::SetNoSlot>(9, "x", eAsnInteger, eRqReadWrite),
#elif defined(CASE_GETTER_AS_SETTER)
    ScalarRow<eKindInteger, &CGroup::GetInt, &CGroup::GetInt>(9, "x", eAsnInteger, eRqReadWrite),
#elif defined(CASE_SETTER_AS_GETTER)
    ScalarRow<eKindInteger, &CGroup::SetInt>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_TABLE_HANDLER_IN_SCALAR_ROW)
    ScalarRow<eKindInteger, &CTable::GetInt>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_TABLE_SETTER_IN_SCALAR_ROW)
    ScalarRow<eKindInteger, nullptr, &CTable::SetInt>(9, "x", eAsnInteger, eRqWriteOnly),
#elif defined(CASE_TABLE_CLASS_IN_SCALAR_ROW)
    ScalarRow<eKindInteger, &CTable::GetScalar>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_SCALAR_HANDLER_IN_COLUMN_ROW)
    ColumnRow<eKindInteger, &CGroup::GetInt>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_SCALAR_CLASS_IN_COLUMN_ROW)
    ColumnRow<eKindInteger, &CGroup::GetAt>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_ROW_CLASS_IN_COLUMN_ROW)
    ColumnRow<eKindInteger, &CRow::GetAt>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_SCALAR_SETTER_IN_COLUMN_ROW)
    ColumnRow<eKindInteger, nullptr, &CGroup::SetInt>(9, "x", eAsnInteger, eRqWriteOnly),
#elif defined(CASE_STATUS_WITHOUT_FLAG)
    ColumnRow<eKindRowStatus, &CTable::GetStatusPlain>(9, "x", eAsnInteger, eRqReadCreate),
#elif defined(CASE_FLAG_WITHOUT_STATUS)
    ColumnRow<eKindEnumerated, &CTable::GetStatus>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_ROW_STATUS_AS_ENTRY_STATUS)
    ColumnRow<eKindEntryStatus, &CTable::GetStatus>(9, "x", eAsnInteger, eRqReadCreate),
#elif defined(CASE_STATUS_IN_SCALAR_ROW)
    ScalarRow<eKindRowStatus>(9, "x", eAsnInteger, eRqNotAccessible),
#elif defined(CASE_STRANGER)
    ScalarRow<eKindInteger, &CStranger::GetInt>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_NO_HANDLER_AT_ALL)
    ScalarRow<eKindInteger, 7>(9, "x", eAsnInteger, eRqReadOnly),
#elif defined(CASE_END_IS_NO_KIND)
    ScalarRow<eKindEnd>(9, "x", eAsnInteger, eRqNotAccessible),
#endif
    kRqEnd};
