#include "base/keyed_hash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace quillmere {
namespace {

TEST(KeyedHash, EveryByteOfAKeyCounts) {
    for (std::size_t size = 1; size <= 17; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            std::set<std::uint64_t> hashes;
            for (int byte = 0; byte < 256; ++byte) {
                std::string key(size, 'k');
                key[at] = static_cast<char>(byte);
                hashes.insert(KeyedHash(key));
            }
            EXPECT_EQ(hashes.size(), 256U) << "byte " << at << " of " << size;
        }
    }
}

}  // namespace
}  // namespace quillmere
