#include "system/code_page.h"

#include "base/utf8.h"

#include <gtest/gtest.h>

namespace quillmere::test {
namespace {

TEST(CodePage, GivesEveryByteItsCharacterAndTakesItBack) {
    std::string bytes;
    for (int value = 0; value <= 0xFF; ++value)
        bytes += static_cast<char>(value);
    const std::string utf8 = Utf8FromCodePage(bytes);
    EXPECT_TRUE(IsValidUtf8(utf8));
    EXPECT_EQ(CodePageFromUtf8(utf8), bytes);
    EXPECT_EQ(Utf8FromCodePage(bytes.substr(0x80, 0x22)),
              "€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ\u00A0¡");
    EXPECT_EQ(Utf8FromCodePage("Caf\xE9 \xC0\xFF"), "Café Àÿ");
}

TEST(CodePage, ReplacesWhatItLacks) {
    EXPECT_EQ(CodePageFromUtf8("aЖb漢c😀d\u0080e\u0100"), "a?b?c?d?e?");
    EXPECT_EQ(CodePageFromUtf8("\xE2\x82|\xC3\xA9|\xFF"), "??|\xE9|?");
}

TEST(CodePage, KnowsUtf8FromOtherBytes) {
    for (const char* const text : {"", "a\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF",
                                   "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(IsValidUtf8(text)) << text;
    for (const char* const text :
         {"\x80", "a\xBFz", "\xC3", "\xC3z", "\xE2\x82", "\xF0\x9F\x98", "\xF0\x9F\x98z",  // incomplete
          "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",   // longer than needed
          "\xED\xA0\x80", "\xED\xBF\xBF",                               // surrogates
          "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"})  // above U+10FFFF
        EXPECT_FALSE(IsValidUtf8(text)) << text;
    EXPECT_FALSE(IsValidUtf8(std::string_view("\xC3\xA9", 1)));
}

}  // namespace
}  // namespace quillmere::test
