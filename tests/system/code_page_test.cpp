#include "system/code_page.h"

#include "base/utf8.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

TEST(CodePage, EveryByteComesBack) {
    for (int value = 0; value <= 0xFF; ++value) {
        const std::string byte(1, static_cast<char>(value));
        const std::string utf8 = Utf8FromCodePage(byte);
        EXPECT_TRUE(IsValidUtf8(utf8)) << value;
        EXPECT_EQ(CodePageFromUtf8(utf8), byte) << value;
    }
}

TEST(CodePage, GivesBytesTheirCharacters) {
    EXPECT_EQ(Utf8FromCodePage("Caf\xE9 \x80 \x8A\x99\x9F \x81\x9D\xA0\xFF"),
              "Café € Š™Ÿ \u0081\u009D\u00A0ÿ");
    EXPECT_EQ(
        Utf8FromCodePage("\x82\x83\x84\x85\x86\x87\x88\x89\x8B\x8C\x8E\x91\x92\x93\x94\x95\x96\x97\x98\x9A"),
        "‚ƒ„…†‡ˆ‰‹ŒŽ‘’“”•–—˜š");
    EXPECT_EQ(Utf8FromCodePage("\x9B\x9C\x9E"), "›œž");
}

TEST(CodePage, ReplacesWhatItLacks) {
    EXPECT_EQ(CodePageFromUtf8("aЖb漢c😀d\u0080e\u0100"), "a?b?c?d?e?");
    EXPECT_EQ(CodePageFromUtf8("\xE2\x82|\xC3\xA9|\xFF"), "??|\xE9|?");
}

TEST(CodePage, KnowsUtf8FromOtherBytes) {
    for (const char* const text : {"", "a\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF",
                                   "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(IsValidUtf8(text)) << text;
    }
    for (const char* const text :
         {"\x80", "a\xBFz", "\xC3", "\xC3z", "\xE2\x82", "\xF0\x9F\x98", "\xF0\x9F\x98z",  // incomplete
          "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",     // longer than needed
          "\xED\xA0\x80", "\xED\xBF\xBF",                                 // surrogates
          "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"}) {  // above U+10FFFF
        EXPECT_FALSE(IsValidUtf8(text)) << text;
    }
    EXPECT_FALSE(IsValidUtf8(std::string_view("\xC3\xA9", 1)));
}

}  // namespace
}  // namespace quillmere::test
