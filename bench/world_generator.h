#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace quillmere {

/// Generates world scripts that look like real saves: a comment preamble, items on four facets, containers
/// whose contents have no position, people, and "[EOF]". The same seed gives the same script on every
/// machine.
class WorldGenerator {
 public:
    explicit WorldGenerator(std::uint32_t seed) : random_(seed) {}

    // Each appends text with CR LF line ends to `text`.
    void AppendPreamble(std::string& text, std::uint64_t blocks) const;
    void AppendBlock(std::string& text);
    static void AppendEnd(std::string& text);

 private:
    std::uint32_t Below(std::uint32_t limit);
    void AppendGround(std::string& text);
    void AppendContained(std::string& text);
    void AppendPerson(std::string& text);
    void AppendHeader(std::string& text, const char* tag, const char* code);
    void AppendPosition(std::string& text);

    std::mt19937 random_;
    std::uint32_t serial_ = 0x40000000;
    std::uint32_t container_ = 0;       ///< serial of the container that is being filled
    std::uint32_t contentsToCome_ = 0;  ///< blocks that go into it
};

/// A whole world script of `blocks` blocks.
std::string MakeWorld(std::uint64_t blocks, std::uint32_t seed);

}  // namespace quillmere
