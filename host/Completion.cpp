#include "host/Completion.h"

#include <algorithm>

namespace VLK::host {

namespace {

constexpr const char* kBlanks = " \t";

// The words before the cursor; the last one, maybe empty, is being typed.
std::vector<std::string> WordsOf(const std::string& text)
{
    std::vector<std::string> words(1);
    for (char c : text) {
        bool blank = std::string(kBlanks).find(c) != std::string::npos;
        if (!blank)
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    }
    return words;
}

bool TakesCommandName(const std::vector<std::string>& words)
{
    return words.size() == 1 || (words.size() == 2 && (words[0] == "help" || words[0] == "?"));
}

bool BeginsWith(const std::string& name, const std::string& beginning)
{
    return name.compare(0, beginning.size(), beginning) == 0;
}

std::string CommonBeginning(const std::vector<std::string>& sorted)
{
    const std::string& first = sorted.front();
    const std::string& last = sorted.back();
    auto differ = std::mismatch(first.begin(), first.end(), last.begin(), last.end());
    return std::string(first.begin(), differ.first);
}

} // namespace

SCompletion Complete(const std::vector<std::string>& names, const std::string& beforeCursor)
{
    SCompletion completion;
    std::vector<std::string> words = WordsOf(beforeCursor);
    const std::string& typed = words.back();
    std::vector<std::string> candidates;
    if (TakesCommandName(words)) {
        std::copy_if(names.begin(), names.end(), std::back_inserter(candidates),
                     [&](const std::string& name) { return BeginsWith(name, typed); });
    }
    if (candidates.empty())
        return completion;
    std::sort(candidates.begin(), candidates.end());
    completion.insert = CommonBeginning(candidates).substr(typed.size());
    if (candidates.size() == 1)
        completion.insert += ' ';
    else if (completion.insert.empty())
        completion.choices = std::move(candidates);
    return completion;
}

} // namespace VLK::host
