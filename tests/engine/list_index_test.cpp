#include "engine/list_index.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

namespace quillmere::test {
namespace {

constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();

/// The walk that the index stands for.
bool Walk(const RectangleTable& table, std::int32_t x, std::int32_t y) {
    for (const RectangleFilter& r : table) {
        if (r.name.empty()) return false;
        if (r.X1 <= x && x <= r.X2 && r.Y1 <= y && y <= r.Y2) return true;
    }
    return false;
}

TEST(RectangleIndex, AnswersAsAWalkOverTheTableWould) {
    std::mt19937 random(1);
    RectangleTable table;
    RectangleIndex index(table);
    EXPECT_FALSE(index.Contains(0, 0)) << "an empty table contains no point";
    for (const std::int32_t range : {3, 40, 5000, most}) {
        const auto any = [&] { return static_cast<std::int32_t>(random()) % range; };
        for (const std::size_t count : {1U, 2U, 70U, 501U}) {
            table.fill({});
            for (std::size_t slot = 0; slot < count; ++slot)
                table[slot] = {"area", any(), any(), any(), any()};
            const RectangleFilter& edge = std::as_const(table)[count - 1];
            ASSERT_EQ(index.Contains(edge.X2, edge.Y1), Walk(table, edge.X2, edge.Y1));
            for (int point = 0; point < 2000; ++point) {
                const std::int32_t x = any();
                const std::int32_t y = any();
                ASSERT_EQ(index.Contains(x, y), Walk(std::as_const(table), x, y)) << x << "," << y;
            }
        }
    }
    table.fill({});
    table[0] = {"everything", least, least, most, most};
    for (const std::int32_t x : {least, -1, 0, most})
        EXPECT_TRUE(index.Contains(x, least) && index.Contains(most, x)) << x;
}

TEST(CodeIndex, FindsExactlyTheCodesBeforeTheFirstFreeSlot) {
    ItemTable table;
    CodeUse use;
    CodeIndex index(table, use);
    EXPECT_FALSE(index.Contains("")) << "an empty table has no code";
    std::vector<std::string> codes = {
        "", "i", "i_gold", "i_torch_", "i_torch_lit_long_name", "i_torch_lit_wide_name"};
    while (codes.size() < filterSlots)
        codes.push_back("i_code_" + std::to_string(codes.size()));
    for (std::size_t slot = 0; slot < filterSlots; ++slot)
        table[slot] = {"item", codes[slot]};
    for (const std::string& code : codes) {
        EXPECT_TRUE(index.Contains(code)) << code;
        EXPECT_FALSE(index.Contains(code + "x") || index.Contains("I" + code)) << code;
    }
    table[100].name.clear();
    EXPECT_TRUE(index.Contains(codes[99]));
    EXPECT_FALSE(index.Contains(codes[100]) || index.Contains(codes[101]));

    ItemTable other;
    other[0] = {"item", "another"};
    table = other;
    EXPECT_TRUE(index.Contains("another") && !index.Contains("i")) << "a copied table is a changed one";
}

}  // namespace
}  // namespace quillmere::test
