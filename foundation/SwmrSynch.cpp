#include "foundation/PthreadLock.h"
#include "foundation/SwmrState.h"

#include <new>

namespace VLK {

TSWMRSynch::TSWMRSynch() : m_state(new (std::nothrow) SState) {}

TSWMRSynch::~TSWMRSynch() { delete m_state; }

int TSWMRSynch::WaitToRead(unsigned timeout)
{
    if (!m_state)
        return eWaitRefused;
    if (m_state->gate.Pass())
        return eWaitDone;
    PthreadLock lock(m_state->mutex);
    return m_state->Read(timeout);
}

void TSWMRSynch::DoneReading()
{
    if (!m_state)
        return;
    const SwmrGate::ELeft left = m_state->gate.Leave();
    if (left == SwmrGate::eLeft)
        return;
    PthreadLock lock(m_state->mutex);
    if (left == SwmrGate::eLeftLast) {
        m_state->AdmitWriter();
        return;
    }
    SwmrReaders::Entry* const entry = m_state->readers.Find(pthread_self());
    if (!entry || --entry->count)
        return;
    m_state->readers.Remove(entry);
    m_state->AdmitWriter();
}

int TSWMRSynch::WaitToWrite(unsigned timeout)
{
    if (!m_state)
        return eWaitRefused;
    PthreadLock lock(m_state->mutex);
    return m_state->Write(timeout);
}

void TSWMRSynch::DoneWriting()
{
    if (!m_state)
        return;
    PthreadLock lock(m_state->mutex);
    if (!m_state->Writes(pthread_self()) || --m_state->writeDepth)
        return;
    m_state->AdmitReaders();
    m_state->AdmitWriter();
    m_state->OpenGate();
}

} // namespace VLK
