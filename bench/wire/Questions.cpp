#include "bench/wire/Questions.h"

#include "bench/wire/Content.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <random>

namespace wire {

namespace {

using CArcs = std::vector<unsigned>;

enum ETag {
    eInteger = 0x02,
    eOctets = 0x04,
    eNull = 0x05,
    eObjectId = 0x06,
    eSequence = 0x30,
    eGet = 0xa0,
    eGetNext = 0xa1,
    eResponse = 0xa2,
    eSet = 0xa3,
    eGetBulk = 0xa5
};

constexpr unsigned kRandomSteps = 20000;
constexpr unsigned kBulkRows = 50;
constexpr size_t kIdBytes = 4;

std::string Wrap(unsigned tag, const std::string& content)
{
    std::string element(1, static_cast<char>(tag));
    std::string length;
    for (size_t rest = content.size(); rest; rest >>= 8)
        length.insert(length.begin(), static_cast<char>(rest & 0xff));
    if (content.size() >= 0x80)
        element += static_cast<char>(0x80 | length.size());
    else if (length.empty())
        length.assign(1, '\0');
    return element + length + content;
}

std::string Integer(unsigned value)
{
    std::string content;
    do {
        content.insert(content.begin(), static_cast<char>(value & 0xff));
        value >>= 8;
    } while (value);
    if (content[0] & 0x80)
        content.insert(content.begin(), '\0');
    return Wrap(eInteger, content);
}

std::string Name(const CArcs& arcs)
{
    std::string content(1, static_cast<char>(40 * arcs[0] + arcs[1]));
    for (size_t i = 2; i < arcs.size(); ++i) {
        std::string arc(1, static_cast<char>(arcs[i] & 0x7f));
        for (unsigned rest = arcs[i] >> 7; rest; rest >>= 7)
            arc.insert(arc.begin(), static_cast<char>(0x80 | (rest & 0x7f)));
        content += arc;
    }
    return Wrap(eObjectId, content);
}

std::string Binding(const CArcs& name, const std::string& value)
{
    return Wrap(eSequence, Name(name) + value);
}

std::string Unasked(const CArcs& name) { return Binding(name, Wrap(eNull, "")); }

// The two numbers are error status and index, or those of GETBULK.
SQuestion Ask(unsigned tag, const std::string& bindings, unsigned first = 0, unsigned second = 0)
{
    const std::string id = Wrap(eInteger, std::string(kIdBytes, '\x7f'));
    const std::string rest = Integer(first) + Integer(second) + Wrap(eSequence, bindings);
    SQuestion question;
    question.datagram =
        Wrap(eSequence, Integer(1) + Wrap(eOctets, "public") + Wrap(tag, id + rest));
    question.idAt = question.datagram.size() - rest.size() - kIdBytes;
    return question;
}

CArcs Below(std::initializer_list<unsigned> arcs)
{
    CArcs name(std::begin(kBase), std::end(kBase));
    name.insert(name.end(), arcs);
    return name;
}

std::vector<SQuestion> GetOfSystem(std::initializer_list<CArcs> objects)
{
    std::string asked;
    SQuestion question;
    std::string expected;
    for (const CArcs& object : objects) {
        CArcs name{1, 3, 6, 1, 2, 1};
        name.insert(name.end(), object.begin(), object.end());
        asked += Unasked(name);
        expected += Name(name);
    }
    question = Ask(eGet, asked);
    question.bindings = expected;
    question.isValueKnown = false;
    question.count = static_cast<unsigned>(objects.size());
    return {question};
}

// Row 0 is before the first one.
CArcs Row(unsigned table, unsigned row)
{
    CArcs name = Below({1, table, 1, 1});
    if (row)
        name.push_back(kIndexStep * row);
    return name;
}

SQuestion Step(unsigned table, unsigned from)
{
    SQuestion question = Ask(eGetNext, Unasked(Row(table, from)));
    question.bindings = Binding(Row(table, from + 1), Integer(kIndexStep * (from + 1)));
    return question;
}

std::vector<SQuestion> RandomSteps(unsigned table)
{
    std::mt19937 random(1);
    std::uniform_int_distribution<unsigned> row(0, RowsOf(table) - 1);
    std::vector<SQuestion> questions;
    for (unsigned i = 0; i < kRandomSteps; ++i)
        questions.push_back(Step(table, row(random)));
    return questions;
}

std::vector<SQuestion> Walk(unsigned table)
{
    std::vector<SQuestion> questions;
    for (unsigned row = 0; row < RowsOf(table); ++row)
        questions.push_back(Step(table, row));
    return questions;
}

std::vector<SQuestion> WalkInBulk(unsigned table)
{
    std::vector<SQuestion> questions;
    for (unsigned from = 0; from < RowsOf(table); from += kBulkRows) {
        SQuestion question = Ask(eGetBulk, Unasked(Row(table, from)), 0, kBulkRows);
        for (unsigned row = from + 1; row <= from + kBulkRows; ++row)
            question.bindings += Binding(Row(table, row), Integer(kIndexStep * row));
        question.count = kBulkRows;
        questions.push_back(question);
    }
    return questions;
}

std::vector<SQuestion> GetAmongRegistrations()
{
    std::vector<SQuestion> questions;
    for (unsigned i = 1; i <= kRegistrations; ++i) {
        questions.push_back(Ask(eGet, Unasked(Below({2, i, 0}))));
        questions.back().bindings = Binding(Below({2, i, 0}), Integer(i));
    }
    std::shuffle(questions.begin(), questions.end(), std::mt19937(1));
    return questions;
}

std::vector<SQuestion> SetsInMemory()
{
    std::vector<SQuestion> questions;
    for (unsigned value = 1; value <= 1000; ++value) {
        const std::string binding = Binding(Below({3, 0}), Integer(value));
        questions.push_back(Ask(eSet, binding));
        questions.back().bindings = binding;
    }
    return questions;
}

// sysContact.
std::vector<SQuestion> PersistedSets()
{
    std::vector<SQuestion> questions;
    for (unsigned value = 1001; value <= 2000; ++value) {
        const std::string binding =
            Binding({1, 3, 6, 1, 2, 1, 1, 4, 0},
                    Wrap(eOctets, "operator " + std::to_string(value) + " of all"));
        questions.push_back(Ask(eSet, binding));
        questions.back().bindings = binding;
    }
    return questions;
}

// Takes the element at the front, if it has that tag.
bool Take(const unsigned char*& at, const unsigned char* end, unsigned tag,
          const unsigned char*& content, size_t& length)
{
    if (end - at < 2 || at[0] != tag)
        return false;
    length = at[1];
    at += 2;
    if (length & 0x80) {
        size_t digits = length & 0x7f;
        if (digits > 4 || static_cast<size_t>(end - at) < digits)
            return false;
        for (length = 0; digits; --digits)
            length = length << 8 | *at++;
    }
    if (length > static_cast<size_t>(end - at))
        return false;
    content = at;
    at += length;
    return true;
}

// The bindings' names one after the other, of values that are some.
bool HaveNames(const unsigned char* at, const unsigned char* end, const std::string& names)
{
    size_t compared = 0;
    while (at != end) {
        const unsigned char* content = nullptr;
        size_t length = 0;
        if (!Take(at, end, eSequence, content, length))
            return false;
        const unsigned char* value = content;
        const unsigned char* name = nullptr;
        size_t nameLength = 0;
        if (!Take(value, content + length, eObjectId, name, nameLength) ||
            value == content + length || *value == eNull || *value >= 0x80)
            return false;
        const size_t size = static_cast<size_t>(value - content);
        if (names.compare(compared, size, reinterpret_cast<const char*>(content), size) != 0)
            return false;
        compared += size;
    }
    return compared == names.size();
}

} // namespace

void SetId(SQuestion& question, unsigned sequence)
{
    question.datagram[question.idAt] = '\x40';
    for (size_t i = 1; i < kIdBytes; ++i)
        question.datagram[question.idAt + i] = static_cast<char>(sequence >> (8 * (3 - i)) & 0xff);
}

std::vector<SQuestion> QuestionsOf(const std::string& name, unsigned table)
{
    if (name == "get")
        return GetOfSystem({{1, 1, 0}});
    if (name == "get10")
        return GetOfSystem({{1, 1, 0},
                            {1, 2, 0},
                            {1, 3, 0},
                            {1, 4, 0},
                            {1, 5, 0},
                            {1, 6, 0},
                            {1, 7, 0},
                            {1, 8, 0},
                            {11, 1, 0},
                            {11, 3, 0}});
    if (name == "registrations")
        return GetAmongRegistrations();
    if (name == "set")
        return SetsInMemory();
    if (name == "persisted")
        return PersistedSets();
    if (table < kSmallestTable || table > kLargestTable)
        return {};
    if (name == "random")
        return RandomSteps(table);
    if (name == "walk")
        return Walk(table);
    if (name == "bulk")
        return WalkInBulk(table);
    return {};
}

bool IsAnswer(const SQuestion& question, const unsigned char* datagram, size_t length)
{
    const unsigned char* at = datagram;
    const unsigned char* end = datagram + length;
    const unsigned char* content = nullptr;
    if (!Take(at, end, eSequence, content, length) || at != end)
        return false;
    at = content;
    if (!Take(at, end, eInteger, content, length) || length != 1 || *content != 1 ||
        !Take(at, end, eOctets, content, length) || !Take(at, end, eResponse, content, length) ||
        at != end)
        return false;
    at = content;
    if (!Take(at, end, eInteger, content, length) || length != kIdBytes ||
        std::memcmp(content, question.datagram.data() + question.idAt, kIdBytes) != 0)
        return false;
    for (int i = 0; i < 2; ++i) { // error status and index
        if (!Take(at, end, eInteger, content, length) || length != 1 || *content != 0)
            return false;
    }
    if (!Take(at, end, eSequence, content, length) || at != end)
        return false;
    if (!question.isValueKnown)
        return HaveNames(content, end, question.bindings);
    return question.bindings.size() == length &&
           std::memcmp(content, question.bindings.data(), length) == 0;
}

} // namespace wire
