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
    // "FILE:LINE: what", in the order of the file.
    std::vector<std::string> Lines();

private:
    struct SProblem {
        SPlace place;
        std::string what;
    };
    std::string m_file;
    std::vector<SProblem> m_problems;
};

// In quotes, on one line and not longer than a line should be.
std::string Quoted(const std::string& text);

// The text of a key, or one of its list.
struct SText {
    const char* key = "";
    std::string text;
    SPlace place;
};

// Reads a table key by key. A value of another kind is a problem, and then as if
// it were not there. Problems with a value begin with its key and the value.
//
// Ownership: neither of the table nor of the problems.
class BConfigTable {
public:
    using FTable = std::function<void(BConfigTable&)>;

    // `what` names the table in messages. Keys are literals.
    BConfigTable(const toml::table& table, std::string what, BProblems& problems);
    BConfigTable(const BConfigTable&) = delete;
    BConfigTable& operator=(const BConfigTable&) = delete;

    SPlace Place() const { return m_place; }
    bool Has(const char* key) { return Find(key) != nullptr; }
    bool IsEmptyList(const char* key);
    std::optional<SText> Text(const char* key);
    // Its absence is a problem.
    std::optional<SText> NeedText(const char* key);
    // As Text(); no problem with it shows its value.
    std::optional<SText> Secret(const char* key);
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

    void Refuse(const SText& value, const std::string& why);
    // Of a value that is there.
    void Refuse(const char* key, const std::string& why);
    void Miss(const char* key, const std::string& why = "");

private:
    const toml::node* Find(const char* key);
    void Refuse(const char* key, const toml::node& value, const std::string& why);
    std::optional<SText> TextOf(const char* key, const toml::node& node, const char* kind);

    const toml::table& m_table;
    const std::string m_what;
    const SPlace m_place;
    BProblems& m_problems;
    std::vector<std::string> m_known;
};

SPlace PlaceOf(const toml::source_region& region);

} // namespace VLK::host
