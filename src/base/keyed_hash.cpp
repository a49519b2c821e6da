#include "base/keyed_hash.h"

#include "base/byte_mask.h"
#include "base/random_word.h"

#include <array>
#include <bit>
#include <cstddef>

namespace quillmere {

namespace {

constexpr std::size_t wordSize = sizeof(std::uint64_t);

/// The state and the rounds as they are published.
class SipState {
 public:
    SipState(std::uint64_t key0, std::uint64_t key1)
        : v_{key0 ^ 0x736f6d6570736575U, key1 ^ 0x646f72616e646f6dU, key0 ^ 0x6c7967656e657261U,
             key1 ^ 0x7465646279746573U} {}

    void Add(std::uint64_t word) {
        v_[3] ^= word;
        Round();
        v_[0] ^= word;
    }
    std::uint64_t Finish() {
        v_[2] ^= 0xFFU;
        for (int round = 0; round < 3; ++round)
            Round();
        return v_[0] ^ v_[1] ^ v_[2] ^ v_[3];
    }

 private:
    void Round() {
        auto& [a, b, c, d] = v_;
        a += b;
        b = std::rotl(b, 13) ^ a;
        a = std::rotl(a, 32);
        c += d;
        d = std::rotl(d, 16) ^ c;
        a += d;
        d = std::rotl(d, 21) ^ a;
        c += b;
        b = std::rotl(b, 17) ^ c;
        c = std::rotl(c, 32);
    }

    std::array<std::uint64_t, 4> v_;
};

}  // namespace

std::uint64_t KeyedHash(std::string_view bytes) {
    static const std::array<std::uint64_t, 2> key = {RandomWord(), RandomWord()};
    SipState state(key[0], key[1]);
    const std::uint64_t size = std::uint64_t{bytes.size()} << 56U;
    for (; bytes.size() >= wordSize; bytes.remove_prefix(wordSize))
        state.Add(EightBytes(bytes.data()));
    std::array<char, wordSize> rest{};
    bytes.copy(rest.data(), rest.size());
    state.Add(size | EightBytes(rest.data()));
    return state.Finish();
}

}  // namespace quillmere
