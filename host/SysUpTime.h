// The agent's sysUpTime, for notifications.
#pragma once

#include <vkmibh/system.h>

namespace VLK::host {

// That of a system group of its own, which is that of every one.
//
// Threads: any.
class BSysUpTime {
public:
    BSysUpTime() : m_system(m_record) {}

    unsigned Ticks()
    {
        unsigned ticks = 0;
        m_system.OnGet_SysUpTime(0, ticks);
        return ticks;
    }

private:
    BMib2System m_record;
    CSystem m_system;
};

} // namespace VLK::host
