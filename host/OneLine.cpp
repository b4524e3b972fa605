#include "host/OneLine.h"

#include <cstdio>

namespace VLK::host {

namespace {

bool IsContinued(char byte) { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; }

// Of the character that the byte begins; 1 where it begins none.
size_t Length(char byte)
{
    const auto first = static_cast<unsigned char>(byte);
    return first < 0xc0 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

// The character at a place of a text in UTF-8, as it can be shown.
std::string Shown(const std::string& text, size_t at, size_t length)
{
    const auto first = static_cast<unsigned char>(text[at]);
    const auto last = static_cast<unsigned char>(text[at + length - 1]);
    bool isControl =
        length == 1 ? first < ' ' || (first >= 0x7f && first < 0xa0) : first == 0xc2 && last < 0xa0;
    if (!isControl)
        return text.substr(at, length);
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\u%04X", last);
    return escaped;
}

} // namespace

std::string OnOneLine(const std::string& text, size_t mostBytes)
{
    std::string line;
    for (size_t at = 0; at < text.size();) {
        if (line.size() >= mostBytes)
            return line + "...";
        const size_t most = Length(text[at]);
        size_t length = 1;
        while (length < most && at + length < text.size() && IsContinued(text[at + length]))
            ++length;
        line += Shown(text, at, length);
        at += length;
    }
    return line;
}

} // namespace VLK::host
