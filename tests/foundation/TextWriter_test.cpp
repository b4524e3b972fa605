#include "foundation/TextWriter.h"

#include "tests/support/FailingAlloc.h"

#include <gtest/gtest.h>
#include <string>

namespace VLK {
namespace {

std::string Text(const BString& text) { return std::string(text.c_str(), text.length()); }

TEST(TextWriter, PutsPiecesOfEveryKindTogether)
{
    BString text("what was there before");
    {
        CTextWriter writer(text);
        writer.Put("id ");
        writer.PutNumber(-7);
        writer.Put(' ');
        writer.Put(BString("a\0b", 3));
        writer.Put(static_cast<const char*>(nullptr));
        writer.Put(BString());
    }
    EXPECT_EQ(std::string("id -7 a\0b", 9), Text(text));
}

TEST(TextWriter, PiecesMayBeLongerThanWhatItCollects)
{
    for (const std::size_t length : {1u, 255u, 256u, 257u, 1000u}) {
        const std::string piece(length, 'x');
        const std::string expected = "a" + piece + "b" + piece + "c";
        BString text;
        {
            CTextWriter writer(text);
            writer.Put('a');
            writer.Put(BString(piece.c_str()));
            writer.Put('b');
            writer.Put(piece.c_str());
            writer.Put('c');
        }
        EXPECT_EQ(expected, Text(text)) << length;
    }
}

TEST(TextWriter, WithoutMemoryTheTextIsEmptyAndNotHalf)
{
    const std::string piece(300, 'x');
    for (int granted = 0;; ++granted) {
        ASSERT_LT(granted, 20);
        BString text;
        bool failed = false;
        {
            FailingAlloc fail(granted, FailingAlloc::eNextOnly);
            CTextWriter writer(text);
            for (int i = 0; i < 5; ++i)
                writer.Put(piece.c_str());
            failed = fail.Failed();
        }
        EXPECT_EQ(failed ? 0u : 1500u, text.length());
        if (!failed)
            break;
    }
}

} // namespace
} // namespace VLK
