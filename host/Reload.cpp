#include "host/Reload.h"

#include "host/Log.h"
#include "host/config/ConfigFile.h"

#include <sys/stat.h>

namespace VLK::host {

namespace {

std::string TextOf(const std::vector<BTransportAddress>& addresses)
{
    std::string text;
    for (const BTransportAddress& address : addresses)
        text += address.ToString() + " ";
    return text;
}

// A pipe, say, has been read, and would be waited for.
bool IsRegular(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

constexpr const char* kStays = "the configuration stays as it was";

} // namespace

void BReload::Read() noexcept
{
    try {
        if (m_options.config.empty())
            return LogLine(eLogNotice, "there is no configuration file to read again");
        if (!IsRegular(m_options.config))
            throw BConfigError({m_options.config + ": is no regular file, and not read again"});
        Try(Configure(m_options));
    } catch (const BConfigError& error) {
        for (const std::string& line : error.Lines())
            LogLine(eLogError, line);
        LogLine(eLogError, kStays);
    } catch (const std::exception& error) {
        LogLine(eLogError, error.what());
        LogLine(eLogError, kStays);
    }
}

void BReload::Try(const SConfiguration& configuration)
{
    try {
        Apply(configuration);
        LogLine(eLogNotice, "read " + m_options.config + " again");
    } catch (const std::exception& error) {
        LogLine(eLogError, m_options.config + " is not wholly in force: " + error.what());
    }
}

// Users first, and only then what they may: an old passphrase gets nobody new rights.
void BReload::Apply(const SConfiguration& configuration)
{
    m_parts.engine.ReplaceUsers(configuration.users);
    m_parts.handler.BetweenSets([&] {
        m_parts.access.Replace(configuration);
        m_parts.modules.Replace(configuration);
    });
    m_parts.agents.SetUsers(configuration.v3 ? configuration.users : std::vector<SUser>());
    m_parts.agents.SetSinks(configuration.trapSinks);
    SetLog(configuration.log, configuration.logLevel);
    TellOfStart(configuration);
}

void BReload::TellOfStart(const SConfiguration& configuration) const
{
    auto tell = [](const char* what) {
        LogLine(eLogWarning, std::string(what) + " takes effect at the next start");
    };
    if (TextOf(configuration.listen) != TextOf(m_started.listen))
        tell("agentAddress");
    if (configuration.store != m_started.store)
        tell("store");
    if (configuration.workers != m_started.workers)
        tell("workers");
    if (configuration.SpeaksV3() != m_started.SpeaksV3())
        tell(configuration.SpeaksV3() ? "SNMPv3" : "the end of SNMPv3");
}

} // namespace VLK::host
