#include "report/facts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>

namespace quillmere::test {
namespace {

/// One of 2 to the power of `bits` keys that all have one hash in the standard library. They are made of
/// pairs of words, of which there are two that change the hash alike.
std::string KeyOf(std::uint32_t number, int bits) {
    constexpr std::uint64_t factor = 0xc6a4a7935bd1e995U;
    constexpr std::uint64_t inverse = 0x5f7a0ea7e59b19bdU;
    static_assert(factor * inverse == 1);
    const auto other = [](std::uint64_t word) {
        const auto mix = [](std::uint64_t x) { return x ^ x >> 47U; };
        return mix((mix(word * factor) * factor ^ std::uint64_t{1} << 63U) * inverse) * inverse;
    };
    std::string key;
    for (int bit = 0; bit < bits; ++bit) {
        for (std::uint64_t word : {std::uint64_t{1}, std::uint64_t{2}}) {
            if ((number >> bit & 1U) != 0) word = other(word);
            key.append(reinterpret_cast<const char*>(&word), sizeof word);
        }
    }
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
