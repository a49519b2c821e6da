// Feeds every file of a folder to the fuzz target that it is linked with, so that inputs the fuzzer once
// found are tested with every compiler. Usage: fuzz_TARGET FOLDER

#include "fuzz/fuzz_target.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 2) return EXIT_FAILURE;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::cout << entry.path().filename().string() << std::endl;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
        ++files;
    }
    return files > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
