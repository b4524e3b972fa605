#include "foundation/HostCall.h"
#include "foundation/PthreadLock.h"

#include <atomic>
#include <climits>
#include <csignal>
#include <new>
#include <vkmibh/base.h>

namespace VLK {

namespace {

// How long the destructor asks a running thread politely, in milliseconds.
constexpr unsigned kStopTimeout = 100;

// Lets the calling thread be cancelled for a scope.
class Cancellable {
public:
    Cancellable() { pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &m_before); }
    ~Cancellable() { pthread_setcancelstate(m_before, nullptr); }
    Cancellable(const Cancellable&) = delete;
    Cancellable& operator=(const Cancellable&) = delete;

private:
    int m_before;
};

// Blocks every signal for a scope, unless they are to be inherited; a thread
// started inside begins with them blocked.
class SignalsBlocked {
public:
    explicit SignalsBlocked(bool block) : m_block(block)
    {
        sigset_t all;
        sigfillset(&all);
        if (m_block)
            pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked()
    {
        if (m_block)
            pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    const bool m_block;
    sigset_t m_before;
};

} // namespace

// Shared by the object and the running thread; the last of them deletes it, so
// that neither can outlive it.
struct TThread::SState {
    SState(TThread* thread, bool isDetached) : owner(thread), detached(isDetached)
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&mutex, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~SState() { pthread_mutex_destroy(&mutex); }
    SState(const SState&) = delete;
    SState& operator=(const SState&) = delete;

    void Release()
    {
        if (users.fetch_sub(1) == 1)
            delete this;
    }
    bool Launch(unsigned stackSize, unsigned flags);
    void Execute();
    // Joins a thread that has ended.
    void Reap();
    bool IsSelf()
    {
        PthreadLock lock(mutex);
        return running && pthread_equal(handle, pthread_self());
    }
    void MarkEnded()
    {
        PthreadLock lock(mutex);
        running = false;
        ended.Set(); // before anybody can start the next run
    }

    TThread* owner;
    const bool detached;
    std::atomic<int> users{1};
    TEvent stop;
    TEvent ended;
    pthread_mutex_t mutex; // guards what follows; recursive, for ResetMembers()
    pthread_t handle{};
    bool running = false;
    bool joinable = false;
};

bool TThread::SState::Launch(unsigned stackSize, unsigned flags)
{
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return false;
    const std::size_t smallest = std::size_t(PTHREAD_STACK_MIN);
    bool fits = true;
    if (stackSize != 0)
        fits = pthread_attr_setstacksize(&attributes,
                                         stackSize < smallest ? smallest : stackSize) == 0;
    if (detached)
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    users.fetch_add(1);
    running = true; // the new thread waits for the mutex before it ends
    {
        SignalsBlocked block((flags & eThreadInheritSignals) == 0);
        running = fits && pthread_create(&handle, &attributes, &TThread::Main, this) == 0;
    }
    pthread_attr_destroy(&attributes);
    joinable = running && !detached;
    if (!running)
        users.fetch_sub(1);
    return running;
}

void TThread::SState::Execute()
{
    // Nobody above could catch what Run() throws: as if it had returned.
    HostCall([this] { return owner->Run(); }, 0);
    if (owner)
        owner->OnThreadEnd();
}

void TThread::SState::Reap()
{
    PthreadLock lock(mutex);
    if (!joinable || running)
        return;
    joinable = false;
    pthread_join(handle, nullptr);
}

void* TThread::Main(void* state)
{
    // Also when the thread is cancelled: the end is always told.
    struct Ending {
        explicit Ending(SState* s) : own(s) {}
        ~Ending()
        {
            own->MarkEnded();
            own->Release();
        }
        SState* const own;
    };
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    SState* const own = static_cast<SState*>(state);
    Ending ending(own);
    {
        PthreadLock started(own->mutex); // Start() has noted the handle
    }
    own->Execute();
    return nullptr;
}

TThread::TThread(bool detached) : m_state(new (std::nothrow) SState(this, detached)) {}

TThread::~TThread()
{
    if (!m_state)
        return;
    if (m_state->IsSelf()) {
        // Deleted by its own Run(): the thread goes on without an object.
        m_state->owner = nullptr;
        PthreadLock lock(m_state->mutex);
        if (m_state->joinable)
            pthread_detach(m_state->handle);
        m_state->joinable = false;
    } else if (!TThread::Stop(kStopTimeout)) {
        TThread::Terminate();
    }
    m_state->Release();
}

int TThread::Start(unsigned stackSize, unsigned flags)
{
    if (!m_state || (flags & ~unsigned(eThreadInheritSignals)))
        return 0;
    PthreadLock lock(m_state->mutex);
    if (m_state->running)
        return 0;
    // The last run has told its end under this mutex and takes it no more.
    m_state->Reap();
    ResetMembers();
    if (m_state->Launch(stackSize, flags))
        return 1;
    m_state->ended.Set();
    return 0;
}

void TThread::Terminate()
{
    if (!m_state)
        return;
    m_state->stop.Set();
    if (m_state->IsSelf())
        return;
    {
        PthreadLock lock(m_state->mutex);
        if (m_state->running)
            pthread_cancel(m_state->handle);
    }
    TThread::Join(kWaitForever);
}

int TThread::Stop(unsigned timeout)
{
    if (!m_state)
        return 1;
    m_state->stop.Set();
    return TThread::Join(timeout);
}

int TThread::Join(unsigned timeout)
{
    if (!m_state)
        return 1;
    if (m_state->IsSelf())
        return 0;
    {
        PthreadLock lock(m_state->mutex);
        if (!m_state->running && !m_state->joinable)
            return 1;
    }
    if (m_state->ended.Wait(timeout) != eWaitDone)
        return 0;
    m_state->Reap();
    return 1;
}

void TThread::ResetMembers()
{
    if (!m_state)
        return;
    m_state->stop.Reset();
    m_state->ended.Reset();
}

int TThread::Run() { return 0; }

void TThread::OnThreadEnd() {}

int TThread::WaitForStop(unsigned timeout)
{
    if (!m_state)
        return eWaitRefused;
    Cancellable cancellable;
    pthread_testcancel();
    return m_state->stop.Wait(timeout);
}

} // namespace VLK
