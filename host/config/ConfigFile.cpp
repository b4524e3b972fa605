#include "host/config/ConfigFile.h"

#include "host/config/ConfigReader.h"
#include "host/config/ConfigTable.h"
#include "host/config/PrivateFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace VLK::host {

namespace {

// More is no file that anybody wrote: a device, say.
constexpr size_t kMostBytes = 1 << 20;

} // namespace

SConfiguration ReadConfigText(const std::string& text, const std::string& file, bool isPrivate)
{
    BProblems problems(file);
    BConfigReader reader(problems, isPrivate);
    SConfiguration configuration;
    try {
        const toml::table root = toml::parse(std::string_view(text));
        configuration = reader.Read(root);
        configuration.file = file;
    } catch (const toml::parse_error& error) {
        SPlace place = PlaceOf(error.source());
        problems.Add(place, std::string(error.description()) + " (column " +
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
        throw BConfigError({path + ": " + std::strerror(errno)});
    return ReadConfigText(text, path, IsPrivate(fileno(file.get())));
}

} // namespace VLK::host
