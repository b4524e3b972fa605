#include "host/config/ConfigFile.h"

#include "host/SystemError.h"
#include "host/config/ConfigReader.h"
#include "host/config/ConfigTable.h"
#include "host/config/PrivateFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

namespace VLK::host {

namespace {

// More is no file that anybody wrote: a device, say.
constexpr size_t kMostBytes = 1 << 20;

// Each dot of a key is a table in a table, which the parser ends by recursion; our keys
// have none.
constexpr size_t kMostDots = 1000;

// Behind the text (of one or three quotes) that begins there; the end when it does not
// end.
size_t BehindText(const std::string& text, size_t at)
{
    const char quote = text[at];
    const bool isLong = text.compare(at, 3, std::string(3, quote)) == 0;
    for (at += isLong ? 3 : 1; at < text.size(); ++at) {
        if (quote == '"' && text[at] == '\\')
            ++at;
        else if (isLong ? text.compare(at, 3, std::string(3, quote)) == 0 : text[at] == quote)
            return std::min(text.size(), text.find_first_not_of(quote, at + (isLong ? 3 : 1)));
        else if (!isLong && text[at] == '\n')
            return text.size(); // the parser comes no further either
    }
    return text.size();
}

size_t DotsOutsideTexts(const std::string& text)
{
    size_t dots = 0;
    for (size_t at = 0; at < text.size();) {
        if (text[at] == '#')
            at = std::min(text.size(), text.find('\n', at));
        else if (text[at] == '"' || text[at] == '\'')
            at = BehindText(text, at);
        else
            dots += text[at++] == '.';
    }
    return dots;
}

// The parser quotes a number that it cannot hold, which may be a passphrase without its
// quotes.
std::string WithoutNumber(std::string description)
{
    for (const char* behind : {"' is not representable", "' could not be interpreted"}) {
        const size_t end = description.find(behind);
        const size_t begin = description.find('\'');
        if (end != description.npos && begin < end)
            description.replace(begin + 1, end - begin - 1, "...");
    }
    return description;
}

} // namespace

SConfiguration ReadConfigText(const std::string& text, const std::string& file, bool isPrivate)
{
    if (DotsOutsideTexts(text) > kMostDots)
        throw BConfigError(
            {file + ": has keys with more than " + std::to_string(kMostDots) + " dots"});
    BProblems problems(file);
    BConfigReader reader(problems, isPrivate);
    SConfiguration configuration;
    try {
        const toml::table root = toml::parse(std::string_view(text));
        configuration = reader.Read(root);
        configuration.file = file;
    } catch (const toml::parse_error& error) {
        SPlace place = PlaceOf(error.source());
        problems.Add(place, WithoutNumber(std::string(error.description())) + " (column " +
                                std::to_string(place.column) + ")");
    }
    if (!problems.AreNone())
        throw BConfigError(problems.Lines());
    return configuration;
}

SConfiguration ReadConfigFile(const std::string& path)
{
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    std::string text;
    char piece[4096];
    while (size_t count = file ? std::fread(piece, 1, sizeof piece, file.get()) : 0) {
        text.append(piece, count);
        if (text.size() > kMostBytes)
            throw BConfigError({path + ": has more than " + std::to_string(kMostBytes) + " bytes"});
    }
    if (!file || std::ferror(file.get()))
        throw BConfigError({path + ": " + SystemError(errno)});
    return ReadConfigText(text, path, IsPrivate(fileno(file.get())));
}

} // namespace VLK::host
