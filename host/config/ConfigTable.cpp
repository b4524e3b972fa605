#include "host/config/ConfigTable.h"

#include "host/OneLine.h"

#include <algorithm>
#include <sstream>
#include <tuple>

namespace VLK::host {

namespace {

constexpr size_t kMostQuoted = 80;

std::string ValueOf(const toml::node& node)
{
    if (const toml::value<std::string>* text = node.as_string())
        return text->get();
    if (const toml::array* list = node.as_array())
        return list->empty() ? "[]" : "[...]";
    if (node.is_table())
        return "{...}";
    std::ostringstream value;
    if (const toml::value<double>* real = node.as_floating_point())
        value << real->get();
    else
        node.visit([&](const auto& known) { value << known; });
    return value.str();
}

constexpr const char* kText = "is no text";
constexpr const char* kTextOrList = "is neither a text nor a list of texts";

} // namespace

SPlace PlaceOf(const toml::source_region& region)
{
    return {region.begin.line, region.begin.column};
}

std::string Quoted(const std::string& text) { return "'" + OnOneLine(text, kMostQuoted) + "'"; }

void BProblems::Add(SPlace place, const std::string& what)
{
    m_problems.push_back({place, OnOneLine(what, what.npos)});
}

std::vector<std::string> BProblems::Lines()
{
    std::stable_sort(
        m_problems.begin(), m_problems.end(), [](const SProblem& a, const SProblem& b) {
            return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
        });
    std::vector<std::string> lines;
    for (const SProblem& problem : m_problems)
        lines.push_back(m_file + ":" + std::to_string(problem.place.line) + ": " + problem.what);
    return lines;
}

BConfigTable::BConfigTable(const toml::table& table, std::string what, BProblems& problems)
    : m_table(table), m_what(std::move(what)), m_place(PlaceOf(table.source())),
      m_problems(problems)
{
}

const toml::node* BConfigTable::Find(const char* key)
{
    if (std::find(m_known.begin(), m_known.end(), key) == m_known.end())
        m_known.emplace_back(key);
    return m_table.get(key);
}

void BConfigTable::Refuse(const char* key, const toml::node& value, const std::string& why)
{
    Refuse({key, ValueOf(value), PlaceOf(value.source())}, why);
}

void BConfigTable::Refuse(const SText& value, const std::string& why)
{
    m_problems.Add(value.place, std::string(value.key) + " " + Quoted(value.text) + " " + why);
}

void BConfigTable::Refuse(const char* key, const std::string& why)
{
    Refuse(key, *m_table.get(key), why);
}

void BConfigTable::Miss(const char* key, const std::string& why)
{
    m_problems.Add(m_place, m_what + " has no " + Quoted(key) + why);
}

bool BConfigTable::IsEmptyList(const char* key)
{
    const toml::node* node = Find(key);
    return node && node->is_array() && node->as_array()->empty();
}

std::optional<SText> BConfigTable::TextOf(const char* key, const toml::node& node, const char* kind)
{
    if (const toml::value<std::string>* text = node.as_string())
        return SText{key, text->get(), PlaceOf(node.source())};
    Refuse(key, node, kind);
    return std::nullopt;
}

std::optional<SText> BConfigTable::Text(const char* key)
{
    const toml::node* node = Find(key);
    return node ? TextOf(key, *node, kText) : std::nullopt;
}

std::optional<SText> BConfigTable::Secret(const char* key)
{
    const toml::node* node = Find(key);
    if (!node || node->is_string())
        return Text(key);
    m_problems.Add(PlaceOf(node->source()), std::string(key) + " " + kText);
    return std::nullopt;
}

std::optional<SText> BConfigTable::NeedText(const char* key)
{
    if (!Has(key))
        Miss(key);
    return Text(key);
}

std::vector<SText> BConfigTable::Texts(const char* key)
{
    std::vector<SText> texts;
    auto take = [&](const toml::node& item, const char* kind) {
        if (std::optional<SText> text = TextOf(key, item, kind))
            texts.push_back(std::move(*text));
    };
    const toml::node* node = Find(key);
    if (!node)
        return texts;
    if (const toml::array* list = node->as_array()) {
        for (const toml::node& item : *list)
            take(item, kText);
    } else {
        take(*node, kTextOrList);
    }
    return texts;
}

void BConfigTable::TextsAndTables(const char* key, const char* what,
                                  const std::function<void(const SText&)>& onText,
                                  const FTable& onTable)
{
    const toml::node* node = Find(key);
    if (!node)
        return;
    const toml::array* list = node->as_array();
    if (!list)
        return Refuse(key, *node, "is no list");
    for (const toml::node& item : *list) {
        if (const toml::table* table = item.as_table()) {
            BConfigTable inner(*table, what, m_problems);
            onTable(inner);
            inner.Finish();
        } else if (std::optional<SText> text = TextOf(key, item, "is neither a text nor a table")) {
            onText(*text);
        }
    }
}

void BConfigTable::Tables(const char* key, const FTable& onTable)
{
    const toml::node* node = Find(key);
    if (!node)
        return;
    const toml::array* list = node->as_array();
    if (!list || !std::all_of(list->begin(), list->end(),
                              [](const toml::node& item) { return item.is_table(); }))
        return Refuse(key, *node, "is no table [[" + std::string(key) + "]]");
    for (const toml::node& item : *list) {
        BConfigTable table(*item.as_table(), "[[" + std::string(key) + "]]", m_problems);
        onTable(table);
        table.Finish();
    }
}

std::optional<bool> BConfigTable::Flag(const char* key)
{
    const toml::node* node = Find(key);
    if (!node)
        return std::nullopt;
    if (const toml::value<bool>* flag = node->as_boolean())
        return flag->get();
    Refuse(key, *node, "is neither true nor false");
    return std::nullopt;
}

std::optional<int64_t> BConfigTable::Integer(const char* key, int64_t least, int64_t most)
{
    const toml::node* node = Find(key);
    if (!node)
        return std::nullopt;
    const toml::value<int64_t>* integer = node->as_integer();
    if (integer && integer->get() >= least && integer->get() <= most)
        return integer->get();
    Refuse(key, *node,
           "is no integer from " + std::to_string(least) + " to " + std::to_string(most));
    return std::nullopt;
}

std::optional<double> BConfigTable::Number(const char* key, double least, double most)
{
    const toml::node* node = Find(key);
    if (!node)
        return std::nullopt;
    std::optional<double> number;
    if (const toml::value<int64_t>* integer = node->as_integer())
        number = static_cast<double>(integer->get());
    else if (const toml::value<double>* real = node->as_floating_point())
        number = real->get();
    if (number && *number >= least && *number <= most)
        return number;
    std::ostringstream kind;
    kind << "is no number from " << least << " to " << most;
    Refuse(key, *node, kind.str());
    return std::nullopt;
}

void BConfigTable::Finish()
{
    std::string known;
    for (const std::string& key : m_known)
        known += (known.empty() ? "" : ", ") + key;
    for (auto&& [key, node] : m_table) {
        std::string name(key.str());
        if (std::find(m_known.begin(), m_known.end(), name) == m_known.end())
            m_problems.Add(PlaceOf(key.source()),
                           Quoted(name) + " is no key of " + m_what + ", which has " + known);
    }
}

} // namespace VLK::host
