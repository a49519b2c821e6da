#include "base/number_text.h"

#include "base/failure.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere::test {
namespace {

/// The number as text, or the failure's description.
std::string Converted(std::string_view text) {
    try {
        return std::to_string(NumberFromText(text));
    } catch (const Failure& failure) {
        return failure.Description();
    }
}

TEST(NumberText, ConvertsWholeNumbers) {
    EXPECT_EQ(Converted("0"), "0");
    EXPECT_EQ(Converted("  12 "), "12");
    EXPECT_EQ(Converted("-7"), "-7");
    EXPECT_EQ(Converted("+007"), "7");
    EXPECT_EQ(Converted("2147483647"), "2147483647");
    EXPECT_EQ(Converted("-2147483648"), "-2147483648");
    EXPECT_EQ(Converted("0000000000000000000000000012"), "12");
}

TEST(NumberText, RoundsFractionsAndHalvesToTheEvenNumber) {
    EXPECT_EQ(Converted("12.5"), "12");
    EXPECT_EQ(Converted("13.5"), "14");
    EXPECT_EQ(Converted("-2.5"), "-2");
    EXPECT_EQ(Converted("-3.5"), "-4");
    EXPECT_EQ(Converted("2.49999999999999999999999999"), "2");
    EXPECT_EQ(Converted("2.50000000000000000000000001"), "3");
    EXPECT_EQ(Converted("2147483647.4"), "2147483647");
    EXPECT_EQ(Converted("-2147483648.5"), "-2147483648");
}

TEST(NumberText, RefusesWhatDoesNotFit) {
    for (const char* const text :
         {"2147483648", "-2147483649", "2147483647.5", "99999999999999999999", "18446744073709551617"}) {
        EXPECT_EQ(Converted(text), "Overflow") << text;
    }
}

TEST(NumberText, RefusesWhatIsNoNumber) {
    for (const char* const text : {"", " ", "-", "abc", "1a", "1 2", "1.", ".5", "1.2.3", "1e3", "0x10",
                                   "--1", "- 1", "1,5", "\t1", "1\n"}) {
        EXPECT_EQ(Converted(text), "Type mismatch") << text;
    }
}

TEST(NumberText, LeavesAPositionForTheSign) {
    EXPECT_EQ(DecimalWithSignPosition(53), " 53");
    EXPECT_EQ(DecimalWithSignPosition(0), " 0");
    EXPECT_EQ(DecimalWithSignPosition(-4), "-4");
}

}  // namespace
}  // namespace quillmere::test
