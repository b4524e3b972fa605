// The values of a configuration: from their text. Each reader returns why the
// text is refused, in words that follow the quoted text; empty when it is not.
#pragma once

#include "host/Log.h"

#include <string>
#include <vkmibh/objectid.h>
#include <vkmibh/octets.h>

namespace VLK::host {

// Of an object identifier (RFC 2578 section 3.5).
constexpr size_t kMostArcs = 128;

// A word that stands for a value.
struct SWord {
    const char* text;
    int value;
};
constexpr SWord kLogTargets[] = {{"stderr", eLogStderr}, {"syslog", eLogSyslog}};
constexpr SWord kLogLevels[] = {
    {"error", eLogError}, {"warning", eLogWarning}, {"notice", eLogNotice}, {"info", eLogInfo}};

template <size_t count>
std::string ReadWord(const std::string& text, const SWord (&words)[count], int& value)
{
    std::string known;
    for (const SWord& word : words) {
        if (text == word.text) {
            value = word.value;
            return "";
        }
        known += (known.empty() ? "" : ", ") + std::string(word.text);
    }
    return "is none of " + known;
}

// 1 to 32 printable characters of ASCII: an index of the access control's tables.
std::string CheckName(const std::string& text);
// 1 to 255 octets: the wire library cuts longer ones.
std::string CheckCommunity(const std::string& text);
// Dotted decimal, with or without a leading dot.
std::string ReadOid(const std::string& text, BObjectIdentifier& oid);
// 1 to 16 octets in hexadecimal, with or without colons between them.
std::string ReadMask(const std::string& text, BOctetString& mask);

} // namespace VLK::host
