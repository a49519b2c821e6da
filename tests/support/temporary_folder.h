#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace quillmere::test {

/// A new folder for one test, removed at the end of it.
class TemporaryFolder {
 public:
    TemporaryFolder() { std::filesystem::create_directory(folder_); }
    ~TemporaryFolder() { std::filesystem::remove_all(folder_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string Path() const { return folder_.string(); }
    std::string Path(const std::string& name) const { return (folder_ / name).string(); }
    void Put(const std::string& name, const std::string& content) const {
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    std::string Get(const std::string& name) const {
        std::ifstream file(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::ptrdiff_t Files() const { return std::distance(std::filesystem::directory_iterator(folder_), {}); }

 private:
    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("quillmere-test-" + std::to_string(std::random_device{}()));
};

}  // namespace quillmere::test
