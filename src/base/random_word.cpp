#include "base/random_word.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <random>

namespace quillmere {

namespace {

/// Sources that the C++ library knows by name: for Linux, for Windows, and for Linux where the system call of
/// the first is refused. Each throws when it has no numbers. The one that the library takes by default may
/// end the program instead.
constexpr const char* sources[] = {"getentropy", "rand_s", "/dev/urandom"};

std::uint64_t WordFromTime() {
    static std::atomic<std::uint64_t> calls = 0;
    const auto time = std::chrono::high_resolution_clock::now().time_since_epoch().count();
    std::seed_seq seed = {static_cast<std::uint64_t>(time), static_cast<std::uint64_t>(time) >> 32U,
                          reinterpret_cast<std::uintptr_t>(&calls) >> 12U, ++calls};
    return std::mt19937_64(seed)();
}

}  // namespace

std::uint64_t RandomWord() {
    for (const char* const source : sources) {
        try {
            std::random_device random(source);
            return std::uint64_t{random()} << 32U | random();
        } catch (const std::exception&) {
            // There is none of that name here, or it gives nothing.
        }
    }
    return WordFromTime();
}

}  // namespace quillmere
