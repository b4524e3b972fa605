// Base services: strings, tokenizer, character helpers, locks, events,
// threads, the pointer list, the singleton registry, atomics, the trace hook.
//
// Everything else in the library stands on this header; it needs only the C
// and C++ libraries and POSIX threads.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

#if defined(__GNUC__)
#define VKMIBH_API __attribute__((visibility("default")))
#define VKMIBH_LOCAL __attribute__((visibility("hidden")))
#else
#define VKMIBH_API
#define VKMIBH_LOCAL
#endif

// clang's thread-safety annotations; nothing with other compilers.
#if defined(__clang__)
#define VKMIBH_TSA(x) __attribute__((x))
#else
#define VKMIBH_TSA(x)
#endif

namespace VLK {

// Waits take milliseconds; this value waits for ever.
constexpr unsigned kWaitForever = ~0u;

// Results of every bounded wait.
enum EWaitResult { eWaitDone = 0, eWaitTimeout = 258, eWaitRefused = 259 };

class VKMIBH_API BString {
public:
    static constexpr unsigned npos = ~0u;

    BString() noexcept : m_data(nullptr), m_length(0), m_capacity(0) {}
    BString(const char* text);
    BString(const char* text, unsigned length);
    BString(const BString& other);
    BString(BString&& other) noexcept;
    ~BString();
    BString& operator=(const BString& other);
    BString& operator=(BString&& other) noexcept;

    void Init(const char* text, unsigned length);
    BString& Assign(const char* text, unsigned length);
    BString& Assign(const BString& other);
    BString& Append(const char* text, unsigned length);
    BString& Append(const BString& other);
    BString& Append(char c);
    bool reserve(unsigned length);
    void clear();

    unsigned length() const { return m_data ? m_length : 0; }
    unsigned capacity() const { return m_capacity; }
    bool empty() const { return length() == 0; }
    // The owned characters, null when nothing was ever allocated.
    const char* data() const { return m_data; }
    // Never null: _Nullstr() stands in for missing storage.
    const char* c_str() const { return m_data ? m_data : _Nullstr(); }
    char operator[](unsigned i) const { return m_data[i]; }
    int compare(unsigned pos, unsigned count, const char* text, unsigned length) const;
    int compare(const BString& other) const;

    static unsigned Strlen(const char* text);
    static const char* _Nullstr();

private:
    friend struct SLayoutCheck;
    char* m_data;
    unsigned m_length;
    unsigned m_capacity;
};

inline bool operator==(const BString& a, const BString& b) { return a.compare(b) == 0; }
inline bool operator!=(const BString& a, const BString& b) { return a.compare(b) != 0; }
inline bool operator<(const BString& a, const BString& b) { return a.compare(b) < 0; }

class VKMIBH_API BStringTokenizer {
public:
    BStringTokenizer(const char* text, const char* delimiters, bool returnDelimiters);
    bool HasMoreTokens() const;
    BString NextToken();
    // Where the tokenizer stopped, counted from the start of the text.
    unsigned Offset() const { return m_offset; }

private:
    BString m_text;
    BString m_delimiters;
    bool m_returnDelimiters;
    unsigned m_offset;
};

struct VKMIBH_API BCharType {
    static bool IsLower(char c);
    static bool IsUpper(char c);
    static char ToLower(char c);
};

VKMIBH_API unsigned VKStrlen(const char* text);
VKMIBH_API int VKStrcmp(const char* a, const char* b);
VKMIBH_API const char* VKIntToStr(int value, int);
VKMIBH_API int VKStrToInt32(const char* text);
VKMIBH_API unsigned VKHexDigit2Int(int c);
VKMIBH_API bool VKIsHexString(const char* text, int length, char separator);

VKMIBH_API void VKDbgModuleTraceClass(int traceClass, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;

// Trace classes: 0x10000 plus the component's number.
enum ETraceClass {
    eTraceCmdParser = 0x10000,
    eTraceFilterTable = 0x10004,
    eTraceSystemGroup = 0x10009,
    eTraceMibHandler = 0x1000a,
    eTraceMibTree = 0x10014,
    eTraceObjectSyntax = 0x10016
};

class VKMIBH_API VKMIBH_TSA(capability("mutex")) TMutex {
public:
    explicit TMutex(bool recursive);
    ~TMutex();
    TMutex(const TMutex&) = delete;
    TMutex& operator=(const TMutex&) = delete;
    int Wait(unsigned timeout) VKMIBH_TSA(acquire_capability());
    void Done() VKMIBH_TSA(release_capability());

private:
    pthread_mutex_t m_mutex;
};

// Holds a TMutex for a scope.
class VKMIBH_TSA(scoped_lockable) TMutexLock {
public:
    explicit TMutexLock(TMutex& mutex) VKMIBH_TSA(acquire_capability(mutex)) : m_mutex(mutex)
    {
        m_mutex.Wait(kWaitForever);
    }
    ~TMutexLock() VKMIBH_TSA(release_capability()) { m_mutex.Done(); }
    TMutexLock(const TMutexLock&) = delete;
    TMutexLock& operator=(const TMutexLock&) = delete;

private:
    TMutex& m_mutex;
};

class VKMIBH_API TEvent {
public:
    TEvent();
    ~TEvent();
    TEvent(const TEvent&) = delete;
    TEvent& operator=(const TEvent&) = delete;
    void Set();
    void Reset();
    int Wait(unsigned timeout);

private:
    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    bool m_signalled;
};

class VKMIBH_API VKMIBH_TSA(capability("shared_mutex")) TSWMRSynch {
public:
    TSWMRSynch();
    ~TSWMRSynch();
    TSWMRSynch(const TSWMRSynch&) = delete;
    TSWMRSynch& operator=(const TSWMRSynch&) = delete;
    int WaitToRead(unsigned timeout);
    void DoneReading();
    int WaitToWrite(unsigned timeout);
    void DoneWriting();

private:
    struct SState;
    SState* m_state;
};

class VKMIBH_API TThread {
public:
    explicit TThread(bool detached);
    virtual ~TThread();
    TThread(const TThread&) = delete;
    TThread& operator=(const TThread&) = delete;
    virtual int Start(unsigned stackSize, unsigned flags);
    virtual void Terminate();
    virtual int Stop(unsigned timeout);
    virtual int Join(unsigned timeout);
    virtual void ResetMembers();
    virtual int Run();
    virtual void OnThreadEnd();

protected:
    // Waits for the stop event; the only place where Terminate() can end the thread.
    int WaitForStop(unsigned timeout);

private:
    struct SState;
    SState* m_state;
};

class VKMIBH_API TTraceGuard {
public:
    TTraceGuard();
    ~TTraceGuard();
    TTraceGuard(const TTraceGuard&) = delete;
    TTraceGuard& operator=(const TTraceGuard&) = delete;
};

struct BLLItem {
    void* data;
    BLLItem* link;
    BLLItem* next;
};

class VKMIBH_API BLinkList {
public:
    BLinkList() noexcept : m_first(nullptr), m_last(nullptr) {}
    ~BLinkList() { Clear(); }
    BLinkList(const BLinkList&) = delete;
    BLinkList& operator=(const BLinkList&) = delete;
    int Insert(void* data);
    void Remove(BLLItem* item);
    void Clear();
    BLLItem* First() const { return m_first; }

private:
    friend struct SLayoutCheck;
    BLLItem* m_first;
    BLLItem* m_last;
};

class VKMIBH_API BSingleton {
public:
    BSingleton();
    virtual ~BSingleton();
    BSingleton(const BSingleton&) = delete;
    BSingleton& operator=(const BSingleton&) = delete;
    virtual void Destroy() = 0;
};

class VKMIBH_API BSingletons {
public:
    static void Register(BSingleton* singleton);
    static void Unregister(BSingleton* singleton);
    // Destroys what is registered, newest first, the timer before all others.
    static void DestroyAll();
};

struct atomic_t {
    std::atomic<int> value{0};
};
VKMIBH_API void AtomicInc(atomic_t* counter);
VKMIBH_API void AtomicAssign(atomic_t* counter, int value);
VKMIBH_API unsigned ui32AtomicRead(atomic_t* counter);

} // namespace VLK
