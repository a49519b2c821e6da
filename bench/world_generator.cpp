#include "bench/world_generator.h"

#include <array>
#include <charconv>
#include <string_view>

namespace quillmere {

namespace {

constexpr std::array<const char*, 12> groundCodes = {"i_torch", "i_chair",     "i_table", "i_barrel",
                                                     "i_crate", "i_lamp_post", "i_sign",  "i_anvil",
                                                     "i_forge", "i_bones",     "i_web",   "i_campfire"};
constexpr std::array<const char*, 3> containerCodes = {"i_chest_wood", "i_backpack", "i_bag"};
constexpr std::array<const char*, 9> containedCodes = {
    "i_gold", "i_bandage", "i_arrow", "i_bread", "i_ingot_iron", "i_cloth", "i_candle", "i_dagger", "i_robe"};
constexpr std::array<const char*, 4> personCodes = {"c_guard", "c_baker", "c_smith", "c_wanderer"};

template <class Number>
void AppendField(std::string& text, std::string_view key, Number value, int base = 10) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, base).ptr;
    text.append(key).append(digits.data(), end).append("\r\n");
}

}  // namespace

std::uint32_t WorldGenerator::Below(std::uint32_t limit) {
    return static_cast<std::uint32_t>(random_()) % limit;
}

void WorldGenerator::AppendPreamble(std::string& text, std::uint64_t blocks) const {
    text.append("// World save of the server Thornwick\r\n");
    AppendField(text, "// Blocks: ", blocks);
    text.append("\r\nTITLE=Thornwick world script\r\nVERSION=0.99\r\n\r\n");
}

void WorldGenerator::AppendBlock(std::string& text) {
    if (contentsToCome_ > 0) {
        --contentsToCome_;
        AppendContained(text);
    } else if (Below(20) == 0) {
        AppendPerson(text);
    } else {
        AppendGround(text);
    }
    text.append("\r\n");
}

void WorldGenerator::AppendEnd(std::string& text) {
    text.append("[EOF]\r\n");
}

void WorldGenerator::AppendGround(std::string& text) {
    if (Below(8) == 0) {
        AppendHeader(text, "WORLDITEM", containerCodes[Below(containerCodes.size())]);
        container_ = serial_;
        contentsToCome_ = 1 + Below(6);
    } else {
        AppendHeader(text, "WORLDITEM", groundCodes[Below(groundCodes.size())]);
    }
    if (Below(4) == 0) AppendField(text, "COLOR=0", 0x400 + Below(0x500), 16);
    AppendField(text, "ATTR=0", Below(0x100), 16);
    AppendPosition(text);
}

void WorldGenerator::AppendContained(std::string& text) {
    AppendHeader(text, "WORLDITEM", containedCodes[Below(containedCodes.size())]);
    AppendField(text, "AMOUNT=", 1 + Below(500));
    AppendField(text, "CONT=0", container_, 16);
}

void WorldGenerator::AppendPerson(std::string& text) {
    AppendHeader(text, "WORLDCHAR", personCodes[Below(personCodes.size())]);
    AppendField(text, "STR=", 10 + Below(90));
    AppendField(text, "DEX=", 10 + Below(90));
    AppendField(text, "INT=", 10 + Below(90));
    text.append("NEED=i_bread, i_robe\r\n");
    AppendPosition(text);
}

void WorldGenerator::AppendHeader(std::string& text, const char* tag, const char* code) {
    text.append("[").append(tag).append(" ").append(code).append("]\r\n");
    AppendField(text, "SERIAL=0", ++serial_, 16);
}

void WorldGenerator::AppendPosition(std::string& text) {
    const std::uint32_t x = Below(6144);
    const std::uint32_t y = Below(4096);
    const std::uint32_t height = Below(40);
    const std::uint32_t facet = Below(3) == 0 ? 1 + Below(3) : 0;
    const auto number = [](std::uint32_t value) { return std::to_string(value); };
    text.append("P=").append(number(x)).append(",").append(number(y)).append(",").append(number(height));
    if (facet != 0) text.append(",").append(number(facet));
    text.append("\r\n");
}

std::string MakeWorld(std::uint64_t blocks, std::uint32_t seed) {
    std::string text;
    WorldGenerator generator(seed);
    generator.AppendPreamble(text, blocks);
    for (std::uint64_t block = 0; block < blocks; ++block)
        generator.AppendBlock(text);
    WorldGenerator::AppendEnd(text);
    return text;
}

}  // namespace quillmere
