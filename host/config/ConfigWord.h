// Keys whose value is one of a few words. Only the configuration's reader includes this.
#pragma once

#include "host/config/ConfigTable.h"
#include "host/config/ConfigValues.h"

#include <vkmibh/labels.h>

namespace VLK::host {

constexpr SWord kLevels[] = {
    {"noAuthNoPriv", eNoAuthNoPriv}, {"authNoPriv", eAuthNoPriv}, {"authPriv", eAuthPriv}};

// The value of a word; `standard` when the key is absent or another word.
template <size_t count>
int Word(BConfigTable& table, const char* key, const SWord (&words)[count], int standard)
{
    std::optional<SText> text = table.Text(key);
    if (!text)
        return standard;
    int value = standard;
    std::string why = ReadWord(text->text, words, value);
    if (!why.empty())
        table.Refuse(*text, why);
    return value;
}

} // namespace VLK::host
