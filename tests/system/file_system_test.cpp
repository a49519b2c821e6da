// What holds for the file system of every machine.

#include "batch/batch_file_system.h"
#include "tests/support/system_files.h"

#include <filesystem>

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

TEST_F(SystemFiles, TellTheKindsOfFailureApart) {
    folder.Put("file", "x");
    EXPECT_EQ(ReadFailure(folder.Path("absent")), 53);
    EXPECT_EQ(ReadFailure(folder.Path("absent/file")), 76);
    EXPECT_EQ(ReadFailure(folder.Path("file/below")), 76);
    EXPECT_EQ(ReadFailure(folder.Path()), 75) << "a folder";
    EXPECT_EQ(ReadFailure(""), 52);
    EXPECT_EQ(ReadFailure(std::string("a\0b", 3)), 52);
    EXPECT_EQ(WriteFailure(folder.Path("absent/file")), 76);
    EXPECT_EQ(WriteFailure(folder.Path()), 75);
    EXPECT_EQ(WriteFailure(folder.Path("new/")), 75);
    EXPECT_EQ(WriteFailure(""), 52);
    EXPECT_EQ(folder.Files(), 1);
}

TEST_F(SystemFiles, AreReplacedWhenCommittedAndKeptWhenAsked) {
    folder.Put("file", "first");
    for (const char* const content : {"second", "third"}) {
        const std::string old = folder.Get("file");
        const auto replacement = Written("file", content);
        for (int time = 0; time < 2; ++time) {
            replacement.pending->KeepOldFile();
            EXPECT_EQ(folder.Get("file"), old);
            EXPECT_EQ(folder.Get("file~"), old);
        }
        replacement.pending->Commit();
        EXPECT_EQ(folder.Get("file"), content);
        EXPECT_EQ(folder.Get("file~"), old);
    }
    Written("file", "given up");
    Written("new", "given up").pending->KeepOldFile();  // there is none
    EXPECT_EQ(folder.Get("file"), "third");
    EXPECT_EQ(folder.Files(), 2) << "the temporary files are gone";
    Replace("new", "complete");
    EXPECT_EQ(folder.Get("new"), "complete");
    fs::create_directory(folder.Path("new~"));
    EXPECT_EQ(FailureOf([&] { Written("new", "").pending->KeepOldFile(); }), 75);
    EXPECT_EQ(folder.Files(), 4) << "no temporary file";
}

TEST_F(SystemFiles, AreNotReplacedWhenAnotherProgramPutThemThere) {
    const std::string target = folder.Path("target");
    for (const bool exists : {true, false}) {
        for (const bool renamed : {true, false}) {
            fs::remove(target);
            if (exists) folder.Put("target", "old");
            const auto replacement = Written("target", "ours");
            folder.Put("other", "theirs");
            renamed ? fs::rename(folder.Path("other"), target) : Replace("target", "theirs");
            EXPECT_EQ(FailureNamed([&] { replacement.pending->Commit(); }),
                      "75 " + target + " (another program put a file there meanwhile)");
            EXPECT_EQ(folder.Get("target"), "theirs");
        }
    }
}

TEST_F(SystemFiles, AreKnownUnderSeveralNames) {
    folder.Put("file", "x");
    folder.Put("other", "x");
    fs::create_hard_link(folder.Path("file"), folder.Path("hard"));
    for (const char* const name : {"file", "hard", "./file"})
        EXPECT_TRUE(system.SameFile(folder.Path("file"), folder.Path(name))) << name;
    EXPECT_FALSE(system.SameFile(folder.Path("file"), folder.Path("other")));
    EXPECT_FALSE(system.SameFile(folder.Path("file"), folder.Path("absent")));
    EXPECT_TRUE(system.SameFile(folder.Path("absent"), folder.Path("./absent"))) << "not there yet";
    EXPECT_FALSE(system.SameFile(folder.Path("absent"), folder.Path("gone")));
}

TEST_F(SystemFiles, MayBeStandardStreams) {
    folder.Put("in", "read already, the rest");
    folder.Put("out", "before, ");
    const std::string out = folder.Path("out");
    const int input = open(folder.Path("in").c_str(), O_RDONLY);
    const int output = open(out.c_str(), O_WRONLY);
    lseek(input, 14, SEEK_SET);
    lseek(output, 0, SEEK_END);
    {
        const Redirection from(STDIN_FILENO, input);
        const Redirection to(STDOUT_FILENO, output);
        const KeptInput kept(system);
        const auto file = system.OpenStandardOutput();
        char bytes[100];
        for (int time = 0; time < 2; ++time)
            file->Write({bytes, kept.Open()->Read(bytes, sizeof bytes)});
        file->Close();
        BatchFileSystem files(system, BatchFileSystem::Writing::Replace, "in");
        EXPECT_TRUE(files.SameFile("-", out) && files.SameFile(out, "-"));
        EXPECT_FALSE(files.SameFile("-", folder.Path("in")));
    }
    close(input);
    close(output);
    EXPECT_EQ(folder.Get("out"), "before, the restthe rest");
    EXPECT_EQ(FailureToKeep(out, O_WRONLY), "57 standard input") << "not to be read";
    EXPECT_EQ(FailureToKeep(folder.Path("absent")), "75 standard input") << "closed";
    const Redirection to(STDOUT_FILENO, -1);
    EXPECT_EQ(FailureNamed([&] { system.OpenStandardOutput(); }), "75 standard output") << "closed";
}

}  // namespace
}  // namespace quillmere::test
