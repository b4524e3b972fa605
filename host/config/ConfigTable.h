// One table of a configuration file: its keys and their kinds.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <toml++/toml.h>
#include <vector>

namespace VLK::host {

struct SPlace {
    unsigned line = 0;
    unsigned column = 0;
};

// What is wrong with a file, by place.
class BProblems {
public:
    explicit BProblems(std::string file) : m_file(std::move(file)) {}
    void Add(SPlace place, const std::string& what);
    bool AreNone() const { return m_problems.empty(); }
    // "FILE:LINE:COLUMN: what", in the order of the file.
    std::vector<std::string> Lines();

private:
    struct SProblem {
        SPlace place;
        std::string what;
    };
    std::string m_file;
    std::vector<SProblem> m_problems;
};

struct SText {
    std::string text;
    SPlace place;
};

// Reads a table key by key. A value of another kind is a problem, and then as if
// it were not there.
//
// Ownership: neither of the table nor of the problems.
class BConfigTable {
public:
    using FTable = std::function<void(BConfigTable&)>;

    // `what` names the table in messages.
    BConfigTable(const toml::table& table, std::string what, BProblems& problems);
    BConfigTable(const BConfigTable&) = delete;
    BConfigTable& operator=(const BConfigTable&) = delete;

    SPlace Place() const { return m_place; }
    bool Has(const char* key) { return Find(key) != nullptr; }
    std::optional<SText> Text(const char* key);
    // Its absence is a problem.
    std::optional<SText> NeedText(const char* key);
    // One text, or a list of them.
    std::vector<SText> Texts(const char* key);
    // A list of texts and tables; `what` names the latter in messages.
    void TextsAndTables(const char* key, const char* what,
                        const std::function<void(const SText&)>& onText, const FTable& onTable);
    // The tables [[key]].
    void Tables(const char* key, const FTable& onTable);
    std::optional<bool> Flag(const char* key);
    std::optional<int64_t> Integer(const char* key, int64_t least, int64_t most);
    std::optional<double> Number(const char* key, double least, double most);
    // Every key that was not asked for is a problem.
    void Finish();

    void Complain(SPlace place, const std::string& what) { m_problems.Add(place, what); }

private:
    const toml::node* Find(const char* key);
    void WrongKind(const toml::node& node, const char* key, const std::string& kind);

    const toml::table& m_table;
    const std::string m_what;
    const SPlace m_place;
    BProblems& m_problems;
    std::vector<std::string> m_known;
};

SPlace PlaceOf(const toml::source_region& region);

} // namespace VLK::host
