// Base services: strings, tokenizer, character helpers, the pointer list, the
// singleton registry, atomic counters, the trace hook; locks, events and
// threads come with <vkmibh/sync.h>.
//
// Everything else in the library stands on this header; it needs only the C
// and C++ libraries and POSIX threads.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vkmibh/sync.h>

namespace VLK {

// A text that owns its characters; any byte may stand in it.
//
//   BString line("get ");
//   line.Append("sysDescr.0", 10);
//   std::puts(line.c_str());
//
// Ownership: owns its characters, copies deeply. May be moved bytewise; all
//            zero bytes are a valid, empty string.
// Threads:   no lock inside; const calls may run side by side.
// Errors:    without memory a string keeps what it held; compare length().
//            Constructors then leave it empty. A null text has no characters.
// Contract:  field order is ABI. With storage, a NUL follows the last
//            character. Order is by unsigned bytes, a proper prefix first.
class VKMIBH_API BString {
public:
    static constexpr unsigned npos = ~0u; // "not found"

    constexpr BString() noexcept : m_data(nullptr), m_length(0), m_capacity(0) {}
    BString(const char* text);
    BString(const char* text, unsigned length);
    BString(const BString& other);
    BString(BString&& other) noexcept;
    ~BString();
    BString& operator=(const BString& other);
    BString& operator=(BString&& other) noexcept;

    // Constructs in raw memory: what the object held before is neither read
    // nor released.
    void Init(const char* text, unsigned length);
    // The text may lie in the string's own storage, here and below.
    BString& Assign(const char* text, unsigned length);
    BString& Assign(const BString& other);
    BString& Append(const char* text, unsigned length);
    BString& Append(const BString& other);
    BString& Append(char c);
    // Makes room for that many characters and keeps those there are; false
    // when there is no memory.
    bool reserve(unsigned length);
    // Empties the string and keeps its storage.
    void clear();

    unsigned length() const { return m_data ? m_length : 0; }
    // Characters that fit before the storage grows.
    unsigned capacity() const { return m_data ? m_capacity : 0; }
    bool empty() const { return length() == 0; }
    // The owned characters, null when nothing was ever allocated.
    const char* data() const { return m_data; }
    // Never null: _Nullstr() stands in for missing storage.
    const char* c_str() const { return m_data ? m_data : _Nullstr(); }
    // i below length().
    char operator[](unsigned i) const { return m_data[i]; }
    // Compares up to count characters from pos, as many as there are, with
    // length characters of text: below, equal to or above 0.
    int compare(unsigned pos, unsigned count, const char* text, unsigned length) const;
    int compare(const BString& other) const;

    static unsigned Strlen(const char* text);
    // The one empty text that stands for every null one.
    static const char* _Nullstr();

private:
    friend struct SLayoutCheck;
    bool Grow(uint64_t length, bool spare);
    bool Aliases(const char* text) const;
    char* m_data;
    unsigned m_length;
    unsigned m_capacity;
};

inline bool operator==(const BString& a, const BString& b)
{
    return a.length() == b.length() && a.compare(b) == 0;
}
inline bool operator!=(const BString& a, const BString& b) { return !(a == b); }
inline bool operator<(const BString& a, const BString& b) { return a.compare(b) < 0; }

// Takes a text apart at any of some delimiter characters.
//
//   BStringTokenizer words("get  sysDescr.0", " ", false);
//   while (words.HasMoreTokens())
//       Use(words.NextToken()); // "get", then "sysDescr.0"
//
// With true, each delimiter is returned too, as a token of its own.
//
// Ownership: copies text and delimiters.
// Threads:   no lock inside.
// Errors:    NextToken() with nothing left gives an empty string; without
//            memory for the copies there are no tokens.
// Contract:  delimiters in a row, at the start or at the end make no empty tokens.
class VKMIBH_API BStringTokenizer {
public:
    BStringTokenizer(const char* text, const char* delimiters, bool returnDelimiters);

    bool HasMoreTokens() const;
    BString NextToken();
    // Where the last token ended, counted from the start of the text.
    unsigned Offset() const { return m_offset; }

private:
    bool IsDelimiter(unsigned offset) const;
    unsigned SkipDelimiters() const;
    BString m_text;
    BString m_delimiters;
    bool m_returnDelimiters;
    unsigned m_offset;
};

// ASCII only, whatever the locale. Ownership: none. Threads: any. Errors: none.
struct VKMIBH_API BCharType {
    static bool IsLower(char c);
    static bool IsUpper(char c);
    static char ToLower(char c);
};

// Texts end with a NUL; a null text counts as the empty one.
VKMIBH_API unsigned VKStrlen(const char* text);
// Below, equal to or above 0, by unsigned bytes.
VKMIBH_API int VKStrcmp(const char* a, const char* b);
// Decimal text. It lasts until the thread's next call: copy it at once. The
// second argument is not used.
VKMIBH_API const char* VKIntToStr(int value, int);
// An optional sign and digits; stops at the first other character. No digits
// are 0; the value is taken modulo 2^32.
VKMIBH_API int VKStrToInt32(const char* text);
// 0 to 15, or ~0 when c is no hexadecimal digit.
VKMIBH_API unsigned VKHexDigit2Int(int c);
// Whether the first length characters are pairs of hexadecimal digits joined
// by single separators ("0a:1B"). No characters at all pass.
VKMIBH_API bool VKIsHexString(const char* text, int length, char separator);

// Trace classes: 0x10000 plus the component's number.
enum ETraceClass {
    eTraceCmdParser = 0x10000,
    eTraceFilterTable = 0x10004,
    eTraceSystemGroup = 0x10009,
    eTraceMibHandler = 0x1000a,
    eTraceMibTree = 0x10014,
    eTraceObjectSyntax = 0x10016
};

// The trace hook; does nothing. Its call sites stay, for a debugger to stop at.
VKMIBH_API void VKDbgModuleTraceClass(int traceClass, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;

// An item of a BLinkList.
struct BLLItem {
    void* data;
    BLLItem* link; // the item before, for the list's own use
    BLLItem* next;
};

// A list of pointers, in the order of their insertion.
//
//   for (BLLItem* item = list.First(); item; item = item->next)
//       Use(item->data);
//
// Ownership: owns its items, never what they point to.
// Threads:   no lock inside.
// Errors:    Insert: nonzero = done, 0 = no memory, list unchanged.
// Contract:  the pointer to the first item is the first field. Remove() takes
//            an item of this list; null is ignored.
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
    BLLItem* Last() const { return m_last; }

private:
    friend struct SLayoutCheck;
    BLLItem* m_first;
    BLLItem* m_last;
};

// When a singleton goes at shutdown.
enum EShutdownOrder {
    eShutdownInTurn = 0, // after all that were registered later
    eShutdownFirst = 1   // before all in turn: it calls back into others
};

// What there is one of in a process, destroyed at its end.
//
// Ownership: its maker's, until Destroy() deletes it: by hand, or at the
//            process's end by BSingletons.
// Threads:   as the derived class says.
// Errors:    none.
// Contract:  the constructor registers and the destructor unregisters; the
//            virtuals keep this order.
class VKMIBH_API BSingleton {
public:
    explicit BSingleton(EShutdownOrder order = eShutdownInTurn);
    BSingleton(const BSingleton&) = delete;
    BSingleton& operator=(const BSingleton&) = delete;

    // In slot order.
    virtual ~BSingleton();
    virtual void Destroy() = 0;
};

// The registry of the singletons. Destroys what is left when the process ends
// or the library is unloaded. A forked child destroys none by itself at its end,
// neither its parent's nor its own: it calls DestroyAll() for these.
//
// Ownership: calls Destroy() on what is registered, each once.
// Threads:   any; Destroy() is called without the registry's lock.
// Errors:    without memory a singleton is not recorded, and lives on at shutdown.
// Contract:  reverse order of registration, the timer before all others.
class VKMIBH_API BSingletons {
public:
    // A singleton that is registered already keeps its place.
    static void Register(BSingleton* singleton, EShutdownOrder order = eShutdownInTurn);
    static void Unregister(BSingleton* singleton);
    // Also destroys what is registered while it runs.
    static void DestroyAll();
};

// A 32-bit counter that threads share, changed and read in one piece.
struct atomic_t {
    std::atomic<int> value{0};
};
// Wraps from the largest to the smallest value.
VKMIBH_API void AtomicInc(atomic_t* counter);
VKMIBH_API void AtomicAssign(atomic_t* counter, int value);
VKMIBH_API unsigned ui32AtomicRead(atomic_t* counter);

} // namespace VLK
