// A variable of the environment that is at last what it was before. No other thread
// reads the environment while it is set, nor at its end.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class EnvironmentVariable {
public:
    explicit EnvironmentVariable(const char* name) : m_name(name)
    {
        if (const char* const value = std::getenv(name))
            m_before = value;
    }
    EnvironmentVariable(const char* name, const std::string& value) : EnvironmentVariable(name)
    {
        Set(value);
    }
    ~EnvironmentVariable()
    {
        if (m_before)
            Set(*m_before);
        else
            Unset();
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

    // NOLINTBEGIN(concurrency-mt-unsafe): see the top
    void Set(const std::string& value) const { setenv(m_name, value.c_str(), 1); }
    void Unset() const { unsetenv(m_name); }
    // NOLINTEND(concurrency-mt-unsafe)

private:
    const char* const m_name;
    std::optional<std::string> m_before;
};
