// Standard input and output of the test program, in the hands of a test.
#pragma once

#include <cstdio>
#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace VLK {
namespace Test {

// Puts another file in the place of standard input or output while it lives.
class Redirection {
public:
    Redirection(int standard, int replacement) : m_standard(standard), m_saved(dup(standard))
    {
        EXPECT_EQ(dup2(replacement, standard), standard);
    }
    ~Redirection()
    {
        dup2(m_saved, m_standard);
        close(m_saved);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    const int m_standard;
    const int m_saved;
};

class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe(m_ends), 0); }
    ~Pipe()
    {
        close(m_ends[0]);
        CloseWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int Reader() const { return m_ends[0]; }
    int Writer() const { return m_ends[1]; }
    void CloseWriter()
    {
        if (m_ends[1] >= 0)
            close(m_ends[1]);
        m_ends[1] = -1;
    }
    void Write(const std::string& text) const
    {
        for (std::size_t done = 0; done < text.size();) {
            const ssize_t count = write(m_ends[1], text.data() + done, text.size() - done);
            if (count <= 0)
                return;
            done += static_cast<std::size_t>(count);
        }
    }

private:
    int m_ends[2] = {-1, -1};
};

// Standard input is a pipe; what no one has read of it is gone at the end.
class InputPipe {
public:
    InputPipe() : m_redirection(STDIN_FILENO, m_pipe.Reader()) {}
    ~InputPipe()
    {
        Join();
        __fpurge(stdin);
        std::clearerr(stdin);
    }

    // What fits into a pipe, 64 KiB.
    void Write(const std::string& text) const { m_pipe.Write(text); }
    void End() { m_pipe.CloseWriter(); }
    // Any length, written beside the test; then the input ends.
    void WriteAll(const std::string& text)
    {
        m_writer = std::thread([this, text] {
            Write(text);
            End();
        });
    }
    void Join()
    {
        if (m_writer.joinable())
            m_writer.join();
    }

private:
    Pipe m_pipe;
    const Redirection m_redirection;
    std::thread m_writer;
};

} // namespace Test
} // namespace VLK
