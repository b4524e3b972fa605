#include "impl/KindSyntax.h"

#include <cstring>
#include <map>
#include <set>
#include <vector>
#include <vkmibh/testing/maps.h>

namespace VLK {
namespace Test {

namespace {

constexpr std::size_t kUnknown = static_cast<std::size_t>(-1);

// "row 3 'fanGoal': " and then what is wrong.
std::string RowText(std::size_t row, const char* name)
{
    return "row " + std::to_string(row + 1) + (name ? std::string(" '") + name + "'" : "") + ": ";
}

std::string CheckOrder(const SRqHndlrMapEntry& row, const SRqHndlrMapEntry& before)
{
    const std::string column = "column " + std::to_string(row.column);
    if (row.column == before.column)
        return column + " is that of the row before too: each object has its own\n";
    if (row.column < before.column)
        return column + " comes after column " + std::to_string(before.column) +
               ": write the rows in rising order, a walk follows them\n";
    return "";
}

std::string CheckHandlers(const SRqHndlrMapEntry& row)
{
    const bool readable = RqIsReadable(row.access), writable = RqIsWritable(row.access);
    if (row.access < eRqWriteOnly || row.access > eRqReadCreate)
        return "no such access, " + std::to_string(row.access) + ": take one of ERqAccess\n";
    if (readable && !row.getHandler)
        return "its access says that it is read, and it has no get handler: give the row one, or "
               "eRqNotAccessible\n";
    if (writable && !row.setHandler)
        return "its access says that it is set, and it has no set handler: give the row one, or "
               "eRqReadOnly\n";
    if (!readable && row.getHandler)
        return "it has a get handler, and its access says that it is not read: eRqReadOnly\n";
    if (!writable && row.setHandler)
        return "it has a set handler, and its access says that it is not set: eRqReadWrite\n";
    return "";
}

std::string CheckRow(const SRqHndlrMapEntry& row)
{
    std::string wrong;
    if (!row.name || !*row.name)
        wrong += "it has no name: give it that of the MIB\n";
    if (row.kind > kRqLastKind)
        return wrong + "no such kind, " + std::to_string(row.kind) +
               ": write rows with ScalarRow and ColumnRow, and end the map with kRqEnd\n";
    if (!KindHasSyntax(row.kind, row.syntax))
        wrong += "syntax " + std::to_string(row.syntax) + " is none that kind " +
                 std::to_string(row.kind) + " serves: see ERqHandlerKind in rqmap.h\n";
    return wrong + CheckHandlers(row);
}

// One line for each; where there are several, with the row's text before each.
void Add(std::string& wrong, const std::string& row, const std::string& lines)
{
    for (std::size_t at = 0; at < lines.size();) {
        const std::size_t end = lines.find('\n', at) + 1;
        wrong += row + lines.substr(at, end - at);
        at = end;
    }
}

std::string CheckRows(const SRqHndlrMapEntry* map, std::size_t rows)
{
    std::string wrong;
    std::set<std::string> names;
    for (std::size_t i = 0;; ++i) {
        if (i == rows)
            return wrong + "the map has no terminating row: end it with kRqEnd\n";
        if (map[i].kind == eKindEnd)
            break;
        std::string told = CheckRow(map[i]);
        if (map[i].name && *map[i].name && !names.insert(map[i].name).second)
            told += "another row has that name: look-ups by name find the first only\n";
        if (i > 0)
            told += CheckOrder(map[i], map[i - 1]);
        Add(wrong, RowText(i, map[i].name), told);
        // What is no row at all is behind the end of an array that is not ended.
        if (rows == kUnknown && map[i].kind > kRqLastKind)
            return wrong;
    }
    return wrong;
}

bool IsDeciding(const SConstraintMapEntry& row)
{
    return row.kind == eConstraintEnumeration || row.kind == eConstraintConvention ||
           row.kind == eConstraintRange || row.kind == eConstraintRefined;
}

// Whether the row takes what it says from the convention that it names.
bool NamesConvention(const SConstraintMapEntry& row)
{
    return row.kind == eConstraintConvention ||
           (row.kind == eConstraintRefined && row.low == 0 && row.high == 0);
}

std::string CheckConstraint(const SConstraintMapEntry* row, bool isFirst)
{
    const bool hasItems = row[0].kind == eConstraintEnumeration;
    if (row->kind == eConstraintItem) {
        if (isFirst || (row[-1].kind != eConstraintItem && row[-1].kind != eConstraintEnumeration))
            return "an item without its enumeration: put an eConstraintEnumeration row before\n";
    } else if (!IsDeciding(*row)) {
        return "no such kind, " + std::to_string(row->kind) +
               ": take one of EConstraintKind, and end the map with kConstraintEnd\n";
    }
    if (hasItems && row[1].kind != eConstraintItem)
        return "an enumeration without items allows no value: list them behind it\n";
    const bool isRange = row->kind == eConstraintRange || row->kind == eConstraintRefined;
    if (isRange && row->low > row->high)
        return "the range " + std::to_string(row->low) + " to " + std::to_string(row->high) +
               " holds nothing: low comes first\n";
    return "";
}

std::string CheckConstraintRows(const SConstraintMapEntry* rows, std::size_t count)
{
    std::string wrong;
    std::set<unsigned> decided;
    for (std::size_t i = 0;; ++i) {
        if (i == count)
            return wrong +
                   "the constraints have no terminating row: end them with kConstraintEnd\n";
        if (rows[i].kind == eConstraintEnd)
            return wrong;
        std::string told;
        // A row that has none behind it is told to be unended, not looked past.
        if (i + 1 != count)
            told = CheckConstraint(rows + i, i == 0);
        // Rows of conventions have no column.
        if (IsDeciding(rows[i]) && rows[i].column != 0 && !decided.insert(rows[i].column).second)
            told += "column " + std::to_string(rows[i].column) +
                    " has a constraint before this one, which alone counts: keep one\n";
        Add(wrong, "constraint " + RowText(i, rows[i].name), told);
        if (count == kUnknown && !IsDeciding(rows[i]) && rows[i].kind != eConstraintItem)
            return wrong;
    }
}

bool IsIn(const SConstraintMapEntry* conventions, const char* name)
{
    for (; conventions && conventions->kind != eConstraintEnd; ++conventions) {
        const bool heads =
            conventions->kind == eConstraintEnumeration || conventions->kind == eConstraintRange;
        if (heads && conventions->name && name && std::strcmp(conventions->name, name) == 0)
            return true;
    }
    return false;
}

// What the constraints refer to: columns and conventions.
std::string CheckReferences(const BMibImpl& impl, const SConstraintMapEntry* shared)
{
    std::string wrong;
    const SConstraintMapEntry* rows = impl.GetConstraintMap();
    for (std::size_t i = 0; rows[i].kind != eConstraintEnd; ++i) {
        const SConstraintMapEntry& row = rows[i];
        std::string told;
        if (!impl.FindRqHndlrEntry(row.column))
            told += "the map has no column " + std::to_string(row.column) +
                    ": take the column that the map's row has\n";
        if (NamesConvention(row) && !impl.FindTCConstraintMapEntry(row.name) &&
            !IsIn(shared, row.name))
            told += "nobody knows that convention, so any value passes: take a name of implbase.h "
                    "(cszTruthValue, ...), or put it into the group's GetTCConstraintMap()\n";
        Add(wrong, "constraint " + RowText(i, row.name), told);
    }
    return wrong;
}

std::string CheckImpl(const BMibImpl& impl, const SConstraintMapEntry* shared)
{
    std::string told;
    const SRqHndlrMapEntry* map = impl.GetRqHndlrMap();
    if (map)
        told += CheckRows(map, kUnknown);
    else if (impl.ImplKind() != eImplTable) // whose rows may be objects, with maps of their own
        told += "it has no map: override GetRqHndlrMap()\n";
    if (const SConstraintMapEntry* constraints = impl.GetConstraintMap()) {
        const std::string rows = CheckConstraintRows(constraints, kUnknown);
        told += rows;
        if (map && rows.empty())
            told += CheckReferences(impl, shared);
    }
    std::string wrong;
    Add(wrong, std::string(impl.Name().c_str()) + ": ", told);
    return wrong;
}

} // namespace

std::string CheckMaps(const BMibImpl& impl) { return CheckImpl(impl, nullptr); }

std::string CheckMaps(BMibImplGroup& group)
{
    std::string wrong;
    if (const SConstraintMapEntry* shared = group.GetTCConstraintMap())
        Add(wrong, "conventions: ", CheckConstraintRows(shared, kUnknown));
    std::map<BObjectIdentifier, std::string> places;
    for (int i = 0; i < group.GetNumImpls(); ++i) {
        const BMibImpl* impl = group.GetImplAt(i);
        if (!impl)
            return wrong + "implementation " + std::to_string(i) +
                   " is null: it and those after it are not registered\n";
        wrong += CheckImpl(*impl, group.GetTCConstraintMap());
        const auto place = places.emplace(impl->Oid(), impl->Name().c_str());
        if (!place.second)
            wrong += std::string(impl->Name().c_str()) + ": " + place.first->second +
                     " has its place already, so that it is not served: give it one of its own\n";
    }
    return wrong;
}

std::string CheckMap(const SRqHndlrMapEntry* map, std::size_t rows) { return CheckRows(map, rows); }

std::string CheckConstraints(const SConstraintMapEntry* constraints, std::size_t rows)
{
    return CheckConstraintRows(constraints, rows);
}

} // namespace Test
} // namespace VLK
