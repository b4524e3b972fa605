// The locks of a SET.
#pragma once

#include <vkmibh/base.h>

namespace VLK {

// What a SET holds from its first check to its last cleanup: the set lock
// (when SETs are serialised) and then the registration lock as reader. They
// are released in the order in which they were taken. Whether the set lock
// was taken is remembered, since the setting may change meanwhile.
class SetLocks {
public:
    SetLocks(TMutex& setLock, TSWMRSynch& registrationLock, bool serialize)
        VKMIBH_TSA(no_thread_safety_analysis)
        : m_setLock(setLock), m_registrationLock(registrationLock), m_serialized(serialize)
    {
        if (m_serialized)
            m_setLock.Wait(kWaitForever);
        m_reading = m_registrationLock.WaitToRead(kWaitForever) == eWaitDone;
    }
    ~SetLocks() VKMIBH_TSA(no_thread_safety_analysis)
    {
        if (m_serialized)
            m_setLock.Done();
        if (m_reading)
            m_registrationLock.DoneReading();
    }
    SetLocks(const SetLocks&) = delete;
    SetLocks& operator=(const SetLocks&) = delete;
    bool Granted() const { return m_reading; }

private:
    TMutex& m_setLock;
    TSWMRSynch& m_registrationLock;
    const bool m_serialized;
    bool m_reading;
};

} // namespace VLK
