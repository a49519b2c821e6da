#include "base/number_text.h"

#include "base/failure_report.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace quillmere::test {
namespace {

TEST(NumberText, IsRoundedToTheEvenNumberOrRefused) {
    const std::map<std::string, std::vector<std::string>> textsOf = {
        {"0", {"0", "-0", "0.5"}},
        {"12", {"  12 ", "+0012", "12.5", "11.5", "11.50000000000000000000000000001"}},
        {"2", {"2.49999999999999999999999999", "2.05", "0000000000000000000000000002"}},
        {"3", {"2.50000000000000000000000001", "2.6", "3.400"}},
        {"-2", {"-2", "-2.5", "-1.5"}},
        {"2147483647", {"2147483647", "2147483647.4"}},
        {"-2147483648", {"-2147483648", "-2147483648.5"}},
        {"Overflow",
         {"2147483648", "-2147483649", "2147483647.5", std::string(20, '9'), "18446744073709551617"}},
        {"Type mismatch",
         {"", " ", "-", "abc", "1a", "1 2", "1.", ".5", "1.2.3", "1e3", "0x10", "--1", "- 1", "1,5", "\t1",
          "1\n"}},
    };
    for (const auto& [result, texts] : textsOf) {
        for (const std::string& text : texts) {
            std::string number;
            const auto failure = TrapFailure([&] { number = std::to_string(NumberFromText(text)); });
            EXPECT_EQ(failure ? failure->Description() : number, result) << '"' << text << '"';
        }
    }
}

TEST(NumberText, LeavesAPositionForTheSign) {
    EXPECT_EQ(DecimalWithSignPosition(53) + DecimalWithSignPosition(0) + DecimalWithSignPosition(-4),
              " 53 0-4");
}

}  // namespace
}  // namespace quillmere::test
