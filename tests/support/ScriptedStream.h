// A console's stream without a console: lines prepared by the test, and
// everything that was written.
#pragma once

#include <vkmibh/cmdhandler.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace VLK {
namespace Test {

inline BString StringOf(const std::string& text)
{
    return BString(text.data(), static_cast<unsigned>(text.size()));
}

inline BStringArray ArgsOf(const std::vector<std::string>& words)
{
    BStringArray args;
    for (const std::string& word : words)
        args.PushBack(StringOf(word));
    return args;
}

class ScriptedStream : public ICmdStream {
public:
    // After the last line comes the quit word, and then nothing: who reads on
    // would do so for ever.
    explicit ScriptedStream(std::vector<std::string> lines = {}, std::string quit = "q")
        : m_lines(std::move(lines)), m_quit(std::move(quit))
    {
    }

    int GetLine(BString& line) override
    {
        if (m_next > m_lines.size())
            throw std::runtime_error("read on behind the quit word");
        const std::string& text = m_next < m_lines.size() ? m_lines[m_next] : m_quit;
        ++m_next;
        line = StringOf(text);
        return 0;
    }
    int Write(const BString& text) override
    {
        texts.emplace_back(text.c_str(), text.length());
        return 0;
    }

    // Lines asked for.
    std::size_t LinesRead() const { return m_next; }
    // What was written since the last call, in one piece.
    std::string Taken()
    {
        std::string all;
        for (const std::string& text : texts)
            all += text;
        texts.clear();
        return all;
    }

    std::vector<std::string> texts; // one per Write()

private:
    const std::vector<std::string> m_lines;
    const std::string m_quit;
    std::size_t m_next = 0;
};

} // namespace Test
} // namespace VLK
