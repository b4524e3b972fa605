#include "host/config/ConfigFile.h"

#include "host/config/ConfigReader.h"
#include "host/config/ConfigTable.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace VLK::host {

SConfiguration ReadConfigText(const std::string& text, const std::string& file)
{
    BProblems problems(file);
    BConfigReader reader(problems);
    SConfiguration configuration;
    try {
        const toml::table root = toml::parse(std::string_view(text));
        configuration = reader.Read(root);
        configuration.file = file;
    } catch (const toml::parse_error& error) {
        problems.Add(PlaceOf(error.source()), std::string(error.description()));
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
    while (size_t count = file ? std::fread(piece, 1, sizeof piece, file.get()) : 0)
        text.append(piece, count);
    if (!file || std::ferror(file.get()))
        throw BConfigError({path + ": " + std::strerror(errno)});
    return ReadConfigText(text, path);
}

} // namespace VLK::host
