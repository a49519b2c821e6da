#include "base/byte_mask.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace quillmere::test {
namespace {

TEST(ByteMask, HasABitForEachByteThatIsWantedAndNoOther) {
    std::mt19937 random(1);
    for (int round = 0; round < 1000; ++round) {
        const auto wanted = static_cast<char>(random());
        std::array<char, maskedBytes> bytes{};
        std::uint64_t expected = 0;
        for (std::size_t i = 0; i < maskedBytes; ++i) {
            // Bytes that differ from the wanted one in a bit or by 1 are those that a wrong carry takes for
            // it.
            const std::array<int, 4> near = {wanted, wanted + 1, wanted ^ 0x80, wanted - 1};
            bytes[i] = static_cast<char>(near[random() % near.size()]);
            expected |= std::uint64_t{bytes[i] == wanted} << i;
        }
        ASSERT_EQ(PlainByteMask(bytes.data(), wanted), expected);
        ASSERT_EQ(ByteMask(bytes.data(), wanted), expected);
    }
}

}  // namespace
}  // namespace quillmere::test
