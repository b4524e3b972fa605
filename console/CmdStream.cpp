#include <vkmibh/cli.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

namespace VLK {

namespace {

constexpr unsigned kUsualLine = 32;

// The next character, or EOF when there is none. A signal only interrupts, and
// the end is not held on to: what comes later is read.
int NextChar()
{
    for (;;) {
        errno = 0;
        const int c = std::getc(stdin);
        if (c != EOF)
            return c;
        const bool interrupted = std::ferror(stdin) && errno == EINTR;
        std::clearerr(stdin);
        if (!interrupted)
            return EOF;
    }
}

} // namespace

std::atomic<unsigned> BCmdStream::s_pauseAtEnd{1000};

BCmdStream::~BCmdStream() = default;

int BCmdStream::GetLine(BString& line)
{
    char text[s_maxLine];
    unsigned length = 0;
    int c = '\0';
    while (length < s_maxLine && (c = NextChar()) != EOF && c != '\n')
        text[length++] = static_cast<char>(c);
    if (c == EOF && length == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(s_pauseAtEnd));
    // One line after the other goes into the same storage.
    line.clear();
    line.reserve(kUsualLine);
    // In one piece: a line with a hole in it would be another command.
    line.Assign(text, length);
    return 0;
}

int BCmdStream::Write(const BString& text)
{
    const TTraceGuard guard;
    // CONTRACT: a C text, which ends at its first NUL.
    const int result = std::printf("%s", text.c_str());
    std::fflush(stdout);
    return result;
}

} // namespace VLK
