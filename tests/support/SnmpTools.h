// The installed SNMP command-line tools, kept from all configuration files.
#pragma once

#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

class SnmpTools {
public:
    SnmpTools()
    {
        // Or the tools say that they made it, among their answers.
        std::filesystem::create_directory(m_directory.File("cert_indexes"));
    }

    // The tool, its version ("1" or "2c"), community and options, then names
    // and values.
    Outcome Ask(const std::string& address, const std::string& tool, const std::string& version,
                const std::string& community, const Arguments& rest,
                const Arguments& options = {}) const
    {
        Arguments line{tool, "-v" + version, "-c", community, "-On"};
        line.insert(line.end(), options.begin(), options.end());
        line.push_back(address);
        line.insert(line.end(), rest.begin(), rest.end());
        return Run(line);
    }

    Outcome Run(const Arguments& line) const
    {
        Arguments whole{"env", "MIBS=", "SNMPCONFPATH=" + m_directory.Path(),
                        "SNMP_PERSISTENT_DIR=" + m_directory.Path()};
        whole.insert(whole.end(), line.begin(), line.end());
        return RunToEnd(whole);
    }

private:
    TempDir m_directory;
};
