#include "system/posix_temporary_names.h"

#include "base/random_word.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cinttypes>
#include <cstddef>
#include <cstdio>

namespace quillmere::posix {

namespace {

constexpr std::size_t nameLength = 30;

/// A name where the signal handler finds it. The text is only changed while `ready` is false.
struct Place {
    std::atomic<bool> taken;
    std::atomic<bool> ready;
    int folder;
    std::array<char, nameLength + 1> text;
};
std::array<Place, 8> places;  // a run has two temporary files
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may use lock-free atomics only");

std::string RandomText() {
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016" PRIx64, RandomWord());
    return "quillmere-" + std::string(digits) + ".tmp";
}

}  // namespace

TemporaryName::TemporaryName(int folder) : text_(RandomText()) {
    const auto free = std::ranges::find_if(places, [](Place& place) { return !place.taken.exchange(true); });
    if (free == places.end()) return;
    place_ = static_cast<int>(free - places.begin());
    free->folder = folder;
    text_.copy(free->text.data(), nameLength);
    free->ready = true;
}

TemporaryName::~TemporaryName() {
    if (place_ < 0) return;
    Place& place = places[static_cast<std::size_t>(place_)];
    place.ready = false;
    place.taken = false;
}

void RemoveTemporaryFiles() noexcept {
    for (const Place& place : places) {
        if (place.ready) unlinkat(place.folder, place.text.data(), 0);
    }
}

}  // namespace quillmere::posix
