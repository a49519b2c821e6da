#pragma once

#include "system/file_system.h"
#include "tests/support/failure_of.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace quillmere::test {

/// Tests of the real file system, in a temporary folder.
class SystemFiles : public testing::Test {
 protected:
    std::int32_t ReadFailure(const std::string& path) const {
        return FailureOf([&] { system.OpenForRead(path); });
    }
    /// Opens a file for writing in both ways, which have to fail alike.
    std::int32_t WriteFailure(const std::string& path) const {
        const std::int32_t direct = FailureOf([&] { system.OpenForWrite(path); });
        EXPECT_EQ(FailureOf([&] { system.OpenReplacement(path, std::nullopt); }), direct) << path;
        return direct;
    }
    void Replace(const std::string& name, const std::string& content,
                 const std::optional<FileSystem::Source>& source = {}) const {
        const auto replacement = system.OpenReplacement(folder.Path(name), source);
        replacement.file->Write(content);
        replacement.file->Close();
        replacement.pending->BringToDisk();
        replacement.pending->Commit();
    }

    FileSystem& system = SystemFileSystem();
    TemporaryFolder folder;
};

}  // namespace quillmere::test
