// Standard input and standard output, and what may be wrong with them.

#include "batch/batch_file_system.h"
#include "system/console.h"
#include "system/kept_input.h"
#include "tests/support/system_files.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

namespace quillmere::test {
namespace {

/// Has a standard stream lead to `target` as long as the object lives; a negative one closes it.
class Redirection {
 public:
    Redirection(int stream, int target) : stream_(stream), before_(fcntl(stream, F_DUPFD_CLOEXEC, 3)) {
        target < 0 ? close(stream) : dup2(target, stream);
    }
    ~Redirection() {
        dup2(before_, stream_);
        close(before_);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

 private:
    int stream_;
    int before_;
};

class PosixStreams : public SystemFiles {
 protected:
    PosixStreams() {
        setenv("TMPDIR", folder.Path().c_str(), 1);
        EXPECT_EQ(pipe2(pipe, O_CLOEXEC), 0);
    }
    ~PosixStreams() override {
        unsetenv("TMPDIR");
        close(pipe[0]);
        close(pipe[1]);
    }

    int Open(const std::string& path, int flags) const { return open(path.c_str(), flags | O_CLOEXEC); }

    /// What is kept while standard input is `input`, which is closed; the failure, if there is one, as its
    /// number and what it names.
    std::string Kept(int input) const {
        const Redirection stream(STDIN_FILENO, input);
        close(input);
        try {
            const KeptInput kept(system);
            std::string content(2'000'000, '\0');
            const auto file = kept.Open();
            std::size_t size = 0;
            while (const std::size_t count = file->Read(&content[size], content.size() - size))
                size += count;
            EXPECT_EQ(kept.Open()->Read(content.data(), 1), std::min<std::size_t>(size, 1)) << "once more";
            content.resize(size);
            return content;
        } catch (const Failure& failure) {
            EXPECT_NE(failure.Advice(), "");
            return std::to_string(failure.Number()) + ' ' + failure.Where();
        }
    }
    std::string FailureToWrite(int output) const {
        const Redirection stream(STDOUT_FILENO, output);
        try {
            const auto file = system.OpenStandardOutput();
            file->Write("blocks");
            file->Close();
            return {};
        } catch (const Failure& failure) {
            return std::to_string(failure.Number()) + ' ' + failure.Where();
        }
    }

    int pipe[2] = {-1, -1};
};

TEST_F(PosixStreams, InputIsKeptWithoutAName) {
    const std::string world(1'000'000, 'x');
    std::thread writer([&] {
        for (std::size_t at = 0; at < world.size();)
            at += static_cast<std::size_t>(write(pipe[1], &world[at], world.size() - at));
        close(std::exchange(pipe[1], -1));
    });
    EXPECT_EQ(Kept(dup(pipe[0])), world);
    writer.join();
    {
        const Redirection stream(STDIN_FILENO, pipe[0]);
        const KeptInput kept(system);
        EXPECT_EQ(folder.Files(), 0) << "nothing that a kill could leave";
    }
    folder.Put("file", "read already, the rest");
    const int file = Open(folder.Path("file"), O_RDONLY);
    lseek(file, 14, SEEK_SET);
    EXPECT_EQ(Kept(file), "the rest");
    setenv("TMPDIR", "", 1);
    EXPECT_EQ(Kept(Open(folder.Path("file"), O_RDONLY)), folder.Get("file"));
}

TEST_F(PosixStreams, InputThatCannotBeKeptFailsWithItsName) {
    folder.Put("file", std::string(200'000, 'x'));
    const std::string file = folder.Path("file");
    EXPECT_EQ(Kept(-1), "75 standard input") << "closed";
    {
        const Redirection stream(STDIN_FILENO, -1);
        const int own = Open(file, O_RDONLY);
        EXPECT_EQ(own, STDIN_FILENO);
        EXPECT_THROW(KeptInput{system}, Failure) << "a file of the program's own";
        close(own);
    }
    EXPECT_EQ(Kept(Open(folder.Path(), O_RDONLY)), "75 standard input") << "a folder";
    EXPECT_EQ(Kept(Open(file, O_WRONLY)), "57 standard input") << "not to be read";
    const std::string disk = folder.Path("disk");
    setenv("TMPDIR", disk.c_str(), 1);
    EXPECT_EQ(Kept(Open(file, O_RDONLY)), "76 " + disk) << "no such folder";
    std::filesystem::create_directory(disk);
    if (mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "may not mount a small disk";
    EXPECT_EQ(Kept(Open(file, O_RDONLY)), "61 " + disk);
    EXPECT_TRUE(std::filesystem::is_empty(disk));
    EXPECT_EQ(umount(disk.c_str()), 0) << "nothing is open there";
}

TEST_F(PosixStreams, ASignalEndsTheWaitForInput) {
    const auto waitForInput = [&] {
        const Redirection stream(STDIN_FILENO, pipe[0]);
        CatchInterrupts();
        if (fork() == 0) {
            usleep(200'000);
            _exit(kill(getppid(), SIGTERM));
        }
        try {
            const KeptInput kept(system);
        } catch (const Cancelled&) {
            _exit(folder.Files() == 0 ? 130 : 1);
        }
    };
    EXPECT_EXIT(waitForInput(), testing::ExitedWithCode(130), "");
}

TEST_F(PosixStreams, OutputIsWrittenOnAndItsFailuresNameIt) {
    folder.Put("file", "before ");
    const std::string file = folder.Path("file");
    const int output = Open(file, O_WRONLY);
    lseek(output, 0, SEEK_END);
    EXPECT_EQ(FailureToWrite(output), "");
    EXPECT_EQ(folder.Get("file"), "before blocks");
    {
        BatchFileSystem files(system, BatchFileSystem::Writing::Replace, "world");
        const Redirection stream(STDOUT_FILENO, output);
        EXPECT_TRUE(files.SameFile("-", file) && files.SameFile(file, "-"));
        EXPECT_FALSE(files.SameFile("-", folder.Path("other")));
    }
    close(output);
    EXPECT_EQ(FailureToWrite(-1), "75 standard output") << "closed";
    close(std::exchange(pipe[0], -1));
    EXPECT_EQ(FailureToWrite(pipe[1]), "57 standard output") << "nobody reads it";
}

}  // namespace
}  // namespace quillmere::test
