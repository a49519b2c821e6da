#include "ui/options_file.h"

#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmere::test {
namespace {

using Entries = std::vector<std::string>;

// That no file stays open, and that what was read is written and read again as the same, is tested for any
// bytes by fuzz/options_file.cpp.
class OptionsFile : public testing::Test {
 protected:
    Options Loaded(const std::string& content, Options options = {}) {
        system.files["ini"] = content;
        log.EmptyLog();
        LoadOptions(system, {"ini"}, options, log);
        return options;
    }
    std::string Saved(const Options& options) {
        SaveOptions(system, "ini", options, log);
        return system.files["ini"];
    }

    MemoryFileSystem system;
    RecordingLog log;
};

TEST_F(OptionsFile, AnotherRunFindsWhatWasSaved) {
    system.files["ini"] = "an older file, longer than the new one";
    const std::string lines = Lines({"True", "/worlds/in.scp", " out "});
    EXPECT_EQ(Saved({true, "/worlds/in.scp", " out "}), lines);
    EXPECT_EQ(Loaded(lines), (Options{true, "/worlds/in.scp", " out "}));
    EXPECT_EQ(Loaded("True\ra\rb\nc\rnever read"), (Options{true, "a", "b\nc"}));
    EXPECT_EQ(log.entries, Entries{});
    EXPECT_EQ(Saved({false, "", "a\rb"}), "True\ra\rb\nc\rnever read") << "no line can hold that path";
    EXPECT_EQ(log.entries,
              Report(FailureKind::BadFileNameOrNumber, "Error in options saving module.  Pffft...."));
}

TEST_F(OptionsFile, TheFirstFileThatExistsIsReadAndWithoutOneTheDefaultsStay) {
    Options options{true, "a", "b"};
    LoadOptions(system, {"absent", "folder", "device"}, options, log);
    EXPECT_EQ(options, (Options{true, "a", "b"}));
    for (const std::string name : {"beside", "own"}) {
        system.files[name] = Lines({"False", name, ""});
        LoadOptions(system, {"absent", "own", "beside"}, options, log);
        EXPECT_EQ(options, (Options{false, name, ""}));
    }
    EXPECT_EQ(log.entries, Entries{"No options found, using defaults."});
}

TEST_F(OptionsFile, ReadsAWordOrANumberAsBooleanAndKeepsWhatComesBeforeAFailure) {
    const Entries words[] = {{" FALSE ", "-0", " 0.0 "}, {" TRUE ", "-1", "0.4", "99999999999"}};
    for (const bool value : {false, true}) {
        for (const std::string& word : words[value]) {
            EXPECT_EQ(Loaded(Lines({word, "", ""}), {!value, "", ""}).blnTranslucent, value) << word;
            EXPECT_EQ(log.entries, Entries{}) << word;
        }
    }
    const char* const module = "Error in options loading module.  Pffft....";
    for (const char* const word : {"yes", "", "Truer", "99999999999x"}) {
        EXPECT_EQ(Loaded(Lines({word, "in", "out"})), Options{}) << word;
        EXPECT_EQ(log.entries, Report(FailureKind::TypeMismatch, module)) << word;
    }
    EXPECT_EQ(log.failedWhere, "ini");
    EXPECT_EQ(Loaded("True\r\nin\r\n", {false, "a", "b"}), (Options{true, "in", "b"}));
    EXPECT_EQ(log.entries, Report(FailureKind::InputPastEnd, module));
}

TEST_F(OptionsFile, APathStandsInTheCodePageWhereItIsReadBackTheSame) {
    system.files["/\xE9 Ж"];
    for (const auto& [path, line] : {std::pair("/Café €", "/Caf\xE9 \x80"),
                                     {"/Ж", "/Ж"},
                                     {"/Ã©" /* é, in the code page's bytes */, "/Ã©"},
                                     {"/\xE9 Ж", "/\xE9 Ж"}}) {
        const std::string content = Lines({"False", line, ""});
        EXPECT_EQ(Saved({false, path, ""}), content);
        EXPECT_EQ(Loaded(content).strInputFile, path);
    }
    system.files["/Caf\xE9"];
    EXPECT_EQ(Saved({false, "", "/Café"}), Lines({"False", "", "/Café"}))
        << "not to be taken for the other file";
    EXPECT_EQ(Loaded(Lines({"0", "/Caf\xE9", "/caf\xE9"})), (Options{false, "/Caf\xE9", "/café"}));
}

}  // namespace
}  // namespace quillmere::test
