#include "system/posix_temporary_names.h"

#include "base/failure.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

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
    constexpr const char* digits = "0123456789abcdef";
    std::array<std::uint8_t, 8> random{};
    if (getentropy(random.data(), random.size()) != 0) throw Failure(FailureKind::DeviceIoError);
    std::string text = "quillmere-";
    for (const std::uint8_t byte : random) {
        text += digits[byte / 16];
        text += digits[byte % 16];
    }
    return text + ".tmp";
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
