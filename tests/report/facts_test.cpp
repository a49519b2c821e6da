#include "report/facts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace quillmere::test {
namespace {

/// One of 2 to the power of `bits` keys that all have one hash in the standard library: two pairs of words,
/// of which they are made, change that hash alike.
std::string KeyOf(std::uint32_t number, int bits) {
    constexpr std::uint64_t pairs[2][2] = {{1, 2}, {0x71581a64e6430001U, 0x71581a64e6430002U}};
    std::string key;
    for (int bit = 0; bit < bits; ++bit)
        key.append(reinterpret_cast<const char*>(pairs[number >> bit & 1U]), sizeof pairs[0]);
    return key;
}

TEST(TallyTable, TakesNoLongerForCodesThatAreMadeToCollide) {
    constexpr int bits = 14;
    const auto timeFor = [](bool hostile) {
        TallyTable table;
        const auto start = std::chrono::steady_clock::now();
        for (std::uint32_t number = 0; number < 1U << bits; ++number)
            table.RowOf(hostile ? KeyOf(number, bits) : std::string(8 * bits, 'x') + std::to_string(number));
        EXPECT_EQ(table.size(), std::size_t{1} << bits);
        return std::chrono::steady_clock::now() - start;
    };
    EXPECT_LT(timeFor(true), 30 * timeFor(false));
}

}  // namespace
}  // namespace quillmere::test
