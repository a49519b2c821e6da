#include "engine/list_index.h"

#include "base/byte_mask.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace quillmere {

namespace {

/// Makes capital letters small in all 8 bytes at once. Other characters change as well, but equal ones stay
/// equal.
constexpr std::uint64_t withoutCase = everyByte * ('a' ^ 'A');

/// A number other than 0 that codes hardly ever share, unless they differ in letter case only. Its highest
/// bits differ best: in a product every bit depends on those below it, and codes often differ in their last
/// characters only.
std::uint32_t HashOf(std::string_view code) {
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
    std::uint64_t hash = code.size();
    const auto add = [&hash](std::uint64_t word) {
        hash = (hash ^ word) * spread;
        hash ^= hash >> 32;
    };
    if (code.size() < 8) {
        std::uint64_t word = 0;
        for (const char c : code)
            word = word << 8 | static_cast<unsigned char>(c);
        add(word | withoutCase);
    } else {
        const char* const last = code.data() + code.size() - 8;
        for (const char* at = code.data(); at < last; at += 8)
            add(EightBytes(at) | withoutCase);
        add(EightBytes(last) | withoutCase);
    }
    return static_cast<std::uint32_t>(hash >> 32) | 1;
}

bool Contains(const RectangleFilter& rectangle, std::int32_t x, std::int32_t y) {
    return rectangle.X1 <= x && x <= rectangle.X2 && rectangle.Y1 <= y && y <= rectangle.Y2;
}

}  // namespace

bool CodeIndex::Contains(std::string_view code) {
    if (preparedAt_ != table_.Changes()) Prepare();
    const std::uint32_t hash = HashOf(code);
    for (std::size_t place = FirstPlace(hash); places_[place].hash != 0; place = (place + 1) % places) {
        if (places_[place].hash != hash) continue;
        const std::size_t slot = places_[place].slot;
        if (table_[slot].code == code) return use_.found[slot] = true;
        NoteOtherCase(slot, code);
    }
    return false;
}

void CodeIndex::NoteOtherCase(std::size_t slot, std::string_view code) {
    if (!use_.inOtherCase[slot].empty()) return;
    const auto small = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c ^ 'a' ^ 'A') : c; };
    if (std::ranges::equal(table_[slot].code, code, {}, small, small)) use_.inOtherCase[slot] = code;
}

void CodeIndex::Prepare() {
    use_ = {};
    places_.assign(places, {});
    const std::size_t count = table_.EntryCount();
    for (std::uint32_t slot = 0; slot < count; ++slot) {
        const std::uint32_t hash = HashOf(table_[slot].code);
        std::size_t place = FirstPlace(hash);
        while (places_[place].hash != 0)
            place = (place + 1) % places;
        places_[place] = {hash, slot};
    }
    preparedAt_ = table_.Changes();
}

bool RectangleIndex::Contains(std::int32_t x, std::int32_t y) {
    if (preparedAt_ != table_.Changes()) Prepare();
    const SlotSet* const columns = columns_.Touching(x);
    const SlotSet* const rows = rows_.Touching(y);
    if (columns == nullptr || rows == nullptr) return false;
    std::uint64_t candidates = 0;
    for (std::size_t word = 0; word < words; ++word)
        candidates |= (*columns)[word] & (*rows)[word];
    return candidates != 0 && AnyContains(*columns, *rows, x, y);
}

bool RectangleIndex::AnyContains(const SlotSet& columns, const SlotSet& rows, std::int32_t x,
                                 std::int32_t y) const {
    for (std::size_t word = 0; word < words; ++word) {
        for (std::uint64_t both = columns[word] & rows[word]; both != 0; both &= both - 1) {
            const std::size_t slot = word * 64 + static_cast<std::size_t>(std::countr_zero(both));
            if (quillmere::Contains(table_[slot], x, y)) return true;
        }
    }
    return false;
}

/// Rectangles whose corners are swapped contain no point and are left out.
void RectangleIndex::Prepare() {
    constexpr auto most = std::numeric_limits<std::int32_t>::max();
    constexpr auto least = std::numeric_limits<std::int32_t>::min();
    const std::size_t count = table_.EntryCount();
    RectangleFilter all{"", most, most, least, least};
    const auto isArea = [](const RectangleFilter& r) { return r.X1 <= r.X2 && r.Y1 <= r.Y2; };
    for (std::size_t slot = 0; slot < count; ++slot) {
        if (!isArea(table_[slot])) continue;
        all.X1 = std::min(all.X1, table_[slot].X1);
        all.Y1 = std::min(all.Y1, table_[slot].Y1);
        all.X2 = std::max(all.X2, table_[slot].X2);
        all.Y2 = std::max(all.Y2, table_[slot].Y2);
    }
    columns_.Reset(all.X1, all.X2);
    rows_.Reset(all.Y1, all.Y2);
    for (std::size_t slot = 0; slot < count; ++slot) {
        if (!isArea(table_[slot])) continue;
        columns_.Add(slot, table_[slot].X1, table_[slot].X2);
        rows_.Add(slot, table_[slot].Y1, table_[slot].Y2);
    }
    preparedAt_ = table_.Changes();
}

void RectangleIndex::Axis::Reset(std::int64_t low, std::int64_t high) {
    touching_.clear();
    low_ = low;
    shift_ = 0;
    if (low > high) return;
    while ((high - low) >> shift_ >= static_cast<std::int64_t>(stripes))
        ++shift_;
    touching_.resize(static_cast<std::size_t>((high - low) >> shift_) + 1);
}

void RectangleIndex::Axis::Add(std::size_t slot, std::int64_t from, std::int64_t to) {
    for (std::int64_t stripe = (from - low_) >> shift_; stripe <= (to - low_) >> shift_; ++stripe)
        touching_[static_cast<std::size_t>(stripe)][slot / 64] |= std::uint64_t{1} << slot % 64;
}

}  // namespace quillmere
