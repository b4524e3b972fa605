// The agent's tables as the tools that want MIB definitions print them.
#include "SmallMibs.h"
#include "ToolAgent.h"

#include <net/if.h>

namespace {

const std::string kAlarm = ".1.3.6.1.2.1.16.3.1.1.";

Arguments Cells(const std::string& line)
{
    Arguments cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '|');)
        cells.push_back(cell);
    return cells;
}

Arguments Names(const mibs::STable& table)
{
    Arguments names{"index"};
    for (const mibs::SColumn& column : table.columns)
        names.push_back(column.name);
    return names;
}

class ToolTables : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(agent.IsReady()) << agent.FirstLine();
        ASSERT_TRUE(agent.IsComplete());
    }
    Outcome Ask(const std::string& tool, const std::string& module, const Arguments& options,
                const Arguments& rest) const
    {
        Arguments line{tool, "-M", modules.Path(), "-m", module, "-v2c", "-c", "public"};
        line.insert(line.end(), options.begin(), options.end());
        line.push_back(agent.Address());
        line.insert(line.end(), rest.begin(), rest.end());
        return agent.Tools().Run(line);
    }
    // index|cell|cell..., a line for each row, and before them the names.
    std::string Printed(const mibs::STable& table, const Arguments& options) const
    {
        Arguments all{"-Ci", "-Cf", "|", "-Ot"};
        all.insert(all.end(), options.begin(), options.end());
        return Ask("snmptable", table.module, all, {table.module + "::" + table.name}).output;
    }
    // What walks find: the cells of each column by the index of their row.
    using CCells = std::map<std::string, std::map<std::string, std::string>>;
    CCells Walked(const mibs::STable& table) const
    {
        const std::string entry = "." + table.oid + ".1.";
        const Arguments root{"." + table.oid};
        // Behind the last one the end of the view may be told, as if it were a value.
        const Arguments names = Lines(agent.Ask("snmpwalk", root, {"-Oq"}).output);
        const Arguments values = Lines(Ask("snmpwalk", table.module, {"-Oqvt"}, root).output);
        CCells cells;
        for (size_t i = 0; i < std::min(names.size(), values.size()); ++i) {
            if (names[i].compare(0, entry.size(), entry) != 0 ||
                names[i].find(" No more variables left") != std::string::npos)
                continue;
            const std::string name =
                names[i].substr(entry.size(), names[i].find(' ') - entry.size());
            const size_t dot = name.find('.');
            cells[name.substr(0, dot)][name.substr(dot + 1)] = values[i];
        }
        return cells;
    }
    // What is printed otherwise than walks find it; empty when nothing is.
    std::string Differences(const mibs::STable& table, const Arguments& options) const
    {
        Arguments lines = Lines(Printed(table, options));
        if (lines.size() < 4 || Cells(lines[2]) != Names(table))
            return lines.size() < 3 ? "no table" : lines[2];
        lines.erase(lines.begin(), lines.begin() + 3);
        CCells all = Walked(table);
        std::string differences;
        for (size_t column = 0; column < table.columns.size(); ++column) {
            auto& cells = all[std::to_string(table.columns[column].number)];
            for (const std::string& line : lines) {
                const Arguments printed = Cells(line);
                const auto cell = cells.find(printed[0]);
                const std::string there = cell == cells.end() ? "?" : cell->second;
                if ((printed.at(column + 1) == "?") != (there == "?") ||
                    (table.columns[column].isSteady && printed[column + 1] != there))
                    differences += line + ": " + there + "\n";
                if (cell != cells.end())
                    cells.erase(cell);
            }
        }
        for (const auto& [column, cells] : all) {
            for (const auto& [index, cell] : cells)
                differences += "not printed: " + column + "." + index + "\n";
        }
        return differences;
    }

    mibs::Directory modules;
    ToolAgent agent;
};

} // namespace

namespace {

class EachToolTable : public ToolTables, public testing::WithParamInterface<mibs::STable> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(Tables, EachToolTable, testing::ValuesIn(mibs::Tables()),
                         [](const auto& test) { return test.param.name; });

TEST_P(EachToolTable, IsPrintedWhole)
{
    Outcome set = agent.Set({kAlarm + "12.7", "i", "2", kAlarm + "3.7", "o", ".1.3.6.1.2.1.1.3.0",
                             kAlarm + "11.7", "s", "me"});
    ASSERT_EQ(set.status, 0) << set.output;
    for (const Arguments& options : {Arguments{}, Arguments{"-CB"}, Arguments{"-Cr", "3"}}) {
        std::string differences;
        // What the kernel tells may change between two requests.
        EXPECT_TRUE(VLK::Eventually([&] {
            differences = Differences(GetParam(), options);
            return differences.empty();
        })) << differences;
    }
}

TEST_F(ToolTables, StorageIsToldAsDisksAre)
{
    const std::string module = "HOST-RESOURCES-MIB";
    Arguments names;
    for (const std::string& line : Lines(Ask("snmpdf", module, {}, {}).output))
        names.push_back(line.substr(0, line.find("  ")));
    ASSERT_GT(names.size(), 5u);
    const Arguments memory{"Description",    "Physical memory", "Virtual memory",
                           "Memory buffers", "Cached memory",   "Swap space"};
    EXPECT_EQ(Arguments(names.begin(), names.begin() + 6), memory);
    EXPECT_EQ(names.size(),
              Lines(agent.Ask("snmpwalk", {".1.3.6.1.2.1.25.2.3.1.1"}).output).size() + 1);
}

TEST_F(ToolTables, InterfacesAreToldAsNetstatDoes)
{
    Arguments names;
    for (const std::string& line :
         Lines(agent.Tools()
                   .Run({"snmpnetstat", "-v2c", "-c", "public", "-Ci", agent.Address()})
                   .output))
        names.push_back(line.substr(0, line.find(' ')));
    ASSERT_GT(names.size(), 1u);
    EXPECT_EQ(names[0], "Name");
    for (size_t i = 1; i < names.size(); ++i)
        EXPECT_NE(if_nametoindex(names[i].substr(0, names[i].find('*')).c_str()), 0u) << names[i];
}
