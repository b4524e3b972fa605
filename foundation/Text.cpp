// Helpers for single characters and zero-terminated texts.
#include <cstdio>
#include <cstring>
#include <vkmibh/base.h>

namespace VLK {

bool BCharType::IsLower(char c) { return c >= 'a' && c <= 'z'; }

bool BCharType::IsUpper(char c) { return c >= 'A' && c <= 'Z'; }

char BCharType::ToLower(char c) { return IsUpper(c) ? char(c - 'A' + 'a') : c; }

unsigned VKStrlen(const char* text)
{
    const std::size_t length = text ? std::strlen(text) : 0;
    return length < BString::npos ? unsigned(length) : BString::npos - 1;
}

int VKStrcmp(const char* a, const char* b)
{
    return std::strcmp(a ? a : BString::_Nullstr(), b ? b : BString::_Nullstr());
}

const char* VKIntToStr(int value, int)
{
    static thread_local char s_text[sizeof "-2147483648"];
    std::snprintf(s_text, sizeof s_text, "%d", value);
    return s_text;
}

int VKStrToInt32(const char* text)
{
    if (!text)
        return 0;
    const bool negative = *text == '-';
    if (negative || *text == '+')
        ++text;
    unsigned value = 0;
    for (; *text >= '0' && *text <= '9'; ++text)
        value = value * 10 + unsigned(*text - '0');
    return int(negative ? 0 - value : value);
}

unsigned VKHexDigit2Int(int c)
{
    if (c >= '0' && c <= '9')
        return unsigned(c - '0');
    if (c >= 'a' && c <= 'f')
        return unsigned(c - 'a') + 10;
    if (c >= 'A' && c <= 'F')
        return unsigned(c - 'A') + 10;
    return ~0u;
}

bool VKIsHexString(const char* text, int length, char separator)
{
    if (length <= 0)
        return length == 0;
    if (!text || length % 3 != 2)
        return false;
    for (int i = 0; i < length; ++i) {
        const bool fits = i % 3 == 2 ? text[i] == separator : VKHexDigit2Int(text[i]) != ~0u;
        if (!fits)
            return false;
    }
    return true;
}

} // namespace VLK
