#include "host/config/ConfigTable.h"

#include <algorithm>
#include <sstream>
#include <tuple>

namespace VLK::host {

SPlace PlaceOf(const toml::source_region& region)
{
    return {region.begin.line, region.begin.column};
}

void BProblems::Add(SPlace place, const std::string& what) { m_problems.push_back({place, what}); }

std::vector<std::string> BProblems::Lines()
{
    std::stable_sort(
        m_problems.begin(), m_problems.end(), [](const SProblem& a, const SProblem& b) {
            return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
        });
    std::vector<std::string> lines;
    for (const SProblem& problem : m_problems)
        lines.push_back(m_file + ":" + std::to_string(problem.place.line) + ":" +
                        std::to_string(problem.place.column) + ": " + problem.what);
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

void BConfigTable::WrongKind(const toml::node& node, const char* key, const std::string& kind)
{
    m_problems.Add(PlaceOf(node.source()), std::string(key) + " must be " + kind);
}

std::optional<SText> BConfigTable::Text(const char* key)
{
    const toml::node* node = Find(key);
    if (!node)
        return std::nullopt;
    if (const toml::value<std::string>* text = node->as_string())
        return SText{text->get(), PlaceOf(node->source())};
    WrongKind(*node, key, "a text");
    return std::nullopt;
}

std::optional<SText> BConfigTable::NeedText(const char* key)
{
    if (!Has(key))
        m_problems.Add(m_place, "this " + m_what + " has no " + key);
    return Text(key);
}

std::vector<SText> BConfigTable::Texts(const char* key)
{
    std::vector<SText> texts;
    const toml::node* node = Find(key);
    if (!node)
        return texts;
    const toml::array* list = node->as_array();
    if (!list) {
        if (const toml::value<std::string>* text = node->as_string())
            texts.push_back({text->get(), PlaceOf(node->source())});
        else
            WrongKind(*node, key, "a text or a list of texts");
        return texts;
    }
    for (const toml::node& item : *list) {
        if (const toml::value<std::string>* text = item.as_string())
            texts.push_back({text->get(), PlaceOf(item.source())});
        else
            WrongKind(item, key, "a text or a list of texts");
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
        return WrongKind(*node, key, "a list");
    for (const toml::node& item : *list) {
        if (const toml::value<std::string>* text = item.as_string()) {
            onText({text->get(), PlaceOf(item.source())});
        } else if (const toml::table* table = item.as_table()) {
            BConfigTable inner(*table, what, m_problems);
            onTable(inner);
            inner.Finish();
        } else {
            WrongKind(item, key, "a list of texts and tables");
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
        return m_problems.Add(PlaceOf(node->source()),
                              std::string(key) + " is written as [[" + key + "]]");
    for (const toml::node& item : *list) {
        BConfigTable table(*item.as_table(), key, m_problems);
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
    WrongKind(*node, key, "true or false");
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
    WrongKind(*node, key,
              "an integer from " + std::to_string(least) + " to " + std::to_string(most));
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
    kind << "a number from " << least << " to " << most;
    WrongKind(*node, key, kind.str());
    return std::nullopt;
}

void BConfigTable::Finish()
{
    std::string known;
    for (const std::string& key : m_known)
        known += (known.empty() ? "" : ", ") + key;
    for (auto&& [key, node] : m_table) {
        if (std::find(m_known.begin(), m_known.end(), key.str()) == m_known.end())
            m_problems.Add(PlaceOf(key.source()), m_what + " has no key '" +
                                                      std::string(key.str()) + "'; it has " +
                                                      known);
    }
}

} // namespace VLK::host
