// Feeds every file of a folder to the fuzz target that it is linked with, so that inputs the fuzzer once
// found are tested with every compiler. Also feeds copies in which a few bytes are others, from elsewhere in
// the file or one more; the last byte, which may choose what is tested, takes all values. Usage: fuzz_TARGET
// FOLDER

#include "fuzz/fuzz_target.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 2) return EXIT_FAILURE;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::cout << entry.path().filename().string() << std::endl;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
        std::mt19937 random(1);
        for (int copy = -1; copy < 256; ++copy) {
            std::vector<std::uint8_t> fed(content.begin(), content.end());
            if (copy >= 0 && !fed.empty()) {
                for (auto changes = random() % 8; changes > 0; --changes) {
                    std::uint8_t& byte = fed[random() % fed.size()];
                    const std::uint8_t other = fed[random() % fed.size()];
                    byte = random() % 4 == 0 ? static_cast<std::uint8_t>(byte + 1) : other;
                }
                fed.back() = static_cast<std::uint8_t>(copy);
            }
            LLVMFuzzerTestOneInput(fed.data(), fed.size());
        }
        ++files;
    }
    return files > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
