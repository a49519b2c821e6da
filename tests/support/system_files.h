#pragma once

#include "system/file_system.h"
#include "system/kept_input.h"
#include "tests/support/failure_of.h"
#include "tests/support/temporary_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>

namespace quillmere::test {

/// Has a standard stream lead to the open descriptor `target` as long as the object lives; a negative one
/// closes the stream.
class Redirection {
 public:
    Redirection(int stream, int target) : stream_(stream), before_(dup(stream)) {
        target < 0 ? close(stream) : dup2(target, stream);
    }
    ~Redirection() {
        dup2(before_, stream_);
        close(before_);
    }

 private:
    int stream_;
    int before_;
};

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
    /// A replacement that can be committed.
    FileSystem::Replacement Written(const std::string& name, const std::string& content,
                                    const std::optional<FileSystem::Source>& source = {}) const {
        auto replacement = system.OpenReplacement(folder.Path(name), source);
        replacement.file->Write(content);
        replacement.file->Close();
        replacement.pending->BringToDisk();
        return replacement;
    }
    void Replace(const std::string& name, const std::string& content,
                 const std::optional<FileSystem::Source>& source = {}) const {
        Written(name, content, source).pending->Commit();
    }

    /// The failure to keep what is at `path` when that is standard input.
    std::string FailureToKeep(const std::string& path, int flags = O_RDONLY) const {
        const Redirection stream(STDIN_FILENO, -1);
        const int input = open(path.c_str(), flags);  // gets the number of standard input
        std::string failure = FailureNamed([&] { KeptInput{system}; });
        if (input >= 0) close(input);
        return failure;
    }

    FileSystem& system = SystemFileSystem();
    TemporaryFolder folder;
};

}  // namespace quillmere::test
