// A request-handler map that ends itself, and that the compiler holds to its order.
#pragma once

#include <vkmibh/maprows.h>

#include <cstddef>

namespace VLK {

// The rows of a map, and the one that ends it. Count is that of the rows.
//
//   static TRqMap<2> s_map; // in the class
//   VKMIBH_CONSTINIT TRqMap<2> CFan::s_map = RqMap(
//       ColumnRow<eKindUnsigned, &CFan::OnGet_Speed>(2, "fanSpeed", eAsnGauge32, eRqReadOnly),
//       ColumnRow<eKindInteger, &CFan::OnGet_Goal, &CFan::OnSet_Goal>(
//           3, "fanGoal", eAsnInteger, eRqReadWrite));
//   SRqHndlrMapEntry* GetRqHndlrMap() const override { return s_map.rows; }
//
// An array of rows with kRqEnd does the same and is checked by CheckMaps() of the
// testing kit only.
template <std::size_t Count>
struct TRqMap {
    SRqHndlrMapEntry rows[Count + 1];
};

// What a map that is wrong comes to call. There are no such functions: the
// compiler, or without VKMIBH_CONSTINIT the linker, names the one that is missing.
void RqMapColumnsMustRise();     // each row's column is above that of the row before
void RqMapEndsItself();          // RqMap() is given no kRqEnd
void RqMapReadableNeedsGetter(); // access says that it is read: give it a get handler
void RqMapWritableNeedsSetter(); // access says that it is set: give it a set handler
void RqMapHandlerBeyondAccess(); // a handler that access lets nobody reach
void RqMapRowNeedsName();        // the name that the MIB has for it

constexpr void RqMapCheckRow(const SRqHndlrMapEntry& row)
{
    if (row.kind == eKindEnd)
        RqMapEndsItself();
    if (!row.name || !*row.name)
        RqMapRowNeedsName();
    if (RqIsReadable(row.access) && row.getHandler == nullptr)
        RqMapReadableNeedsGetter();
    if (RqIsWritable(row.access) && row.setHandler == nullptr)
        RqMapWritableNeedsSetter();
    if ((!RqIsReadable(row.access) && row.getHandler != nullptr) ||
        (!RqIsWritable(row.access) && row.setHandler != nullptr))
        RqMapHandlerBeyondAccess();
}

template <class... Rows>
constexpr TRqMap<sizeof...(Rows)> RqMap(const Rows&... rows)
{
    const TRqMap<sizeof...(Rows)> map{{rows..., kRqEnd}};
    for (std::size_t i = 0; i < sizeof...(Rows); ++i) {
        RqMapCheckRow(map.rows[i]);
        if (i > 0 && map.rows[i].column <= map.rows[i - 1].column)
            RqMapColumnsMustRise();
    }
    return map;
}

} // namespace VLK
