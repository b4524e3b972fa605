// Words that are compared and messages that are written.
#pragma once

#include "foundation/HostCall.h"
#include "foundation/TextWriter.h"

#include <vkmibh/cmdhandler.h>

namespace VLK {

inline bool BeginsWith(const BString& text, const BString& prefix)
{
    return text.compare(0, prefix.length(), prefix.c_str(), prefix.length()) == 0;
}

inline bool IsText(const BString& string, const char* text)
{
    return string.compare(0, BString::npos, text, BString::Strlen(text)) == 0;
}

// What a handler gives out as text; none when it throws.
template <class TCall>
const char* HandlersText(TCall&& call)
{
    return HostCall(call, static_cast<const char*>(nullptr));
}

// Writes one text, put together from pieces that a CTextWriter takes. A message
// that there is no memory for is not written.
template <class... TPiece>
void WriteText(ICmdStream& out, const TPiece&... pieces)
{
    BString text;
    {
        CTextWriter writer(text);
        (writer.Put(pieces), ...);
    }
    if (!text.empty())
        out.Write(text);
}

} // namespace VLK
