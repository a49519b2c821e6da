#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#define QUILLMERE_SSE2 1
#include <emmintrin.h>
#else
#define QUILLMERE_SSE2 0
#endif

namespace quillmere {

// Lines are short, and a search that starts anew for each of them spends its time on starting. These look at
// a run of bytes at once and answer with one bit for each: the lowest bit is the first byte.

/// Bytes that ByteMask looks at.
inline constexpr std::size_t maskedBytes = 64;

/// A word with 1 in each of its bytes.
inline constexpr std::uint64_t everyByte = 0x0101010101010101;

/// The 8 bytes at `bytes` as one word, the first of them lowest.
inline std::uint64_t EightBytes(const char* bytes) {
    std::uint64_t word = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&word, bytes, sizeof word);
    } else {
        for (unsigned i = 0; i < sizeof word; ++i)
            word |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    return word;
}

/// Which of the 64 bytes at `bytes` equal `wanted`, in standard C++.
inline std::uint64_t PlainByteMask(const char* bytes, char wanted) {
    constexpr std::uint64_t lowBits = 0x7F * everyByte;
    constexpr std::uint64_t gather =
        0x0102040810204080;  // brings bit 0 of each byte together in the top byte
    std::uint64_t mask = 0;
    for (unsigned first = 0; first < maskedBytes; first += 8) {
        const std::uint64_t word = EightBytes(bytes + first) ^ everyByte * static_cast<unsigned char>(wanted);
        const std::uint64_t zeroBytes = ~(((word & lowBits) + lowBits) | word | lowBits) >> 7;
        mask |= (zeroBytes * gather >> 56) << first;
    }
    return mask;
}

#if QUILLMERE_SSE2
/// Which of the 16 bytes at `bytes` equal those of `pattern`.
inline std::uint32_t SixteenByteMask(const char* bytes, __m128i pattern) {
    const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(part, pattern)));
}
#endif

/// The same as PlainByteMask, with the processor's wide registers where it is known to have them.
inline std::uint64_t ByteMask(const char* bytes, char wanted) {
#if QUILLMERE_SSE2
    const __m128i pattern = _mm_set1_epi8(wanted);
    const std::uint32_t low = SixteenByteMask(bytes, pattern) | SixteenByteMask(bytes + 16, pattern) << 16;
    const std::uint32_t high = SixteenByteMask(bytes + 32, pattern) | SixteenByteMask(bytes + 48, pattern)
                                                                          << 16;
    return std::uint64_t{high} << 32 | low;
#else
    return PlainByteMask(bytes, wanted);
#endif
}

}  // namespace quillmere
