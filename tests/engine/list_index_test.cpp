#include "engine/list_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <utility>

namespace quillmere::test {
namespace {

/// What an index stands for: a walk over the entries before the first free slot.
template <class Table, class Wanted>
bool Walk(const Table& table, const Wanted& wanted) {
    const auto end = table.begin() + static_cast<std::ptrdiff_t>(table.EntryCount());
    return std::any_of(table.begin(), end, wanted);
}

TEST(RectangleIndex, AnswersAsAWalkOverTheTableWould) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    std::mt19937 random(1);
    RectangleTable table;
    RectangleIndex index(table);
    const auto check = [&](std::int32_t x, std::int32_t y) {
        const auto holds = [&](const RectangleFilter& r) {
            return r.X1 <= x && x <= r.X2 && r.Y1 <= y && y <= r.Y2;
        };
        ASSERT_EQ(index.Contains(x, y), Walk(std::as_const(table), holds)) << x << "," << y;
    };
    check(0, 0);
    for (const std::int32_t range : {3, 40, 5000, most}) {
        const auto any = [&] { return static_cast<std::int32_t>(random()) % range; };
        for (const std::size_t count : {1U, 2U, 70U, 501U}) {
            table.fill({});
            for (std::size_t slot = 0; slot < count; ++slot)
                table[slot] = {"area", any(), any(), any(), any()};
            check(std::as_const(table)[count - 1].X2, std::as_const(table)[count - 1].Y1);
            for (int point = 0; point < 2000; ++point)
                check(any(), any());
        }
    }
    table.fill({});
    table[0] = {"everything", least, least, most, most};
    for (const std::int32_t x : {least, -1, 0, most})
        EXPECT_TRUE(index.Contains(x, least) && index.Contains(most, x)) << x;
}

TEST(CodeIndex, AnswersAsAWalkOverTheTableWould) {
    std::mt19937 random(1);
    ItemTable table;
    CodeUse use;
    CodeIndex index(table, use);
    const auto check = [&](const std::string& code) {
        const auto has = [&](const ItemFilter& item) { return item.code == code; };
        ASSERT_EQ(index.Contains(code), Walk(std::as_const(table), has)) << code;
    };
    const auto any = [&] {
        std::string code = std::string("i_torch_lit_long_name").substr(0, random() % 22);
        for (int end = 0; end < 2; ++end)
            code += "aAbBiI_1"[random() % 8];
        return code;
    };
    for (const std::size_t count : {0U, 1U, 70U, 501U}) {
        ItemTable other;
        for (std::size_t slot = 0; slot < count; ++slot)
            other[slot] = {slot == 450 ? "" : "item", any()};
        table = other;  // a copied table is a changed one
        for (const ItemFilter& item : other)
            check(item.code);
        for (int code = 0; code < 2000; ++code)
            check(any());
    }
    table[450].name = "no gap";
    check(std::as_const(table)[500].code);
}

}  // namespace
}  // namespace quillmere::test
