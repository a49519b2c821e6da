#include "bench/world_generator.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;  // bytes

/// Writes `text` to standard output and empties it. Returns whether the system took it all.
bool Send(std::string& text) {
    const bool sent = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    text.clear();
    return sent;
}

bool WriteWorld(std::uint64_t blocks, std::uint32_t seed) {
    quillmere::WorldGenerator generator(seed);
    std::string text;
    generator.AppendPreamble(text, blocks);
    bool good = true;
    for (std::uint64_t block = 0; good && block < blocks; ++block) {
        generator.AppendBlock(text);
        if (text.size() >= pieceSize) good = Send(text);
    }
    quillmere::WorldGenerator::AppendEnd(text);
    return good && Send(text) && std::fflush(stdout) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Writes a world script to standard output; a million blocks make about 71 MB.",
                 "make_world");
    std::uint64_t blocks = 1000;
    std::uint32_t seed = 1;
    app.add_option("--blocks", blocks, "Blocks to write")->capture_default_str();
    app.add_option("--seed", seed, "The same seed gives the same world")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    if (!WriteWorld(blocks, seed)) {
        std::cerr << "make_world: standard output cannot be written\n";
        return 1;
    }
    return 0;
}
