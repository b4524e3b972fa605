// What the library traces. A test program that has one tells it from a
// VKDbgModuleTraceClass of its own, instead of the library's empty one.
#pragma once

#include <vkmibh/base.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

namespace VLK {
namespace Test {

// Keeps, for as long as it lives, what this thread traces in one class.
class TraceRecorder {
public:
    explicit TraceRecorder(int traceClass) : m_traceClass(traceClass), m_before(s_current)
    {
        s_current = this;
    }
    ~TraceRecorder() { s_current = m_before; }
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    static void Note(int traceClass, const char* format, va_list arguments)
    {
        if (!s_current || s_current->m_traceClass != traceClass)
            return;
        char text[512];
        std::vsnprintf(text, sizeof text, format, arguments);
        s_current->texts.emplace_back(text);
    }

    std::vector<std::string> texts;

private:
    static inline thread_local TraceRecorder* s_current = nullptr;
    const int m_traceClass;
    TraceRecorder* const m_before;
};

} // namespace Test
} // namespace VLK
