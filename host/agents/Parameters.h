// The parameters of an agent as the operator reads them.
#pragma once

#include <atomic>
#include <string>
#include <vkmibh/base.h>

namespace VLK::host {

// Lines "name: value", the last without its end.
class BParameters {
public:
    BParameters& Add(const char* name, const std::string& value)
    {
        m_text += (m_text.empty() ? "" : "\n") + std::string(name) + ": " + value;
        return *this;
    }
    BParameters& Add(const char* name, const std::atomic<unsigned>& value)
    {
        return Add(name, std::to_string(value));
    }
    BString Text() const { return BString(m_text.data(), static_cast<unsigned>(m_text.size())); }

private:
    std::string m_text;
};

} // namespace VLK::host
