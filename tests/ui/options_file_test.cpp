#include "ui/options_file.h"

#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"
#include "tests/support/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmere::test {
namespace {

const char* const loadingModule = "Error in options loading module.  Pffft....";
const char* const savingModule = "Error in options saving module.  Pffft....";
const std::vector<std::string> nothing;

class OptionsFile : public testing::Test {
 protected:
    Options Loaded(const std::string& content, Options options = {}) {
        system.files["ini"] = content;
        log.EmptyLog();
        LoadOptions(system, {"ini"}, options, log);
        EXPECT_EQ(system.openFiles, 0);
        return options;
    }
    std::string Saved(const Options& options) {
        log.EmptyLog();
        SaveOptions(system, "ini", options, log);
        EXPECT_EQ(system.openFiles, 0);
        return system.files["ini"];
    }
    void ExpectInputLine(const std::string& line, const std::string& path) {
        EXPECT_EQ(Saved({false, path, ""}), Lines({"False", line, ""}));
    }

    MemoryFileSystem system;
    RecordingLog log;
};

TEST_F(OptionsFile, AnotherRunFindsWhatWasSaved) {
    system.files["ini"] = "an older file, longer than the new one";
    const Options options{true, "/worlds/in.scp", " out "};
    EXPECT_EQ(Saved(options), Lines({"True", "/worlds/in.scp", " out "}));
    EXPECT_EQ(Loaded(system.files["ini"]), options);
    EXPECT_EQ(Loaded(Saved({}), options), Options{});
    EXPECT_EQ(Loaded("True\ra\rb\nc\rnever read"), (Options{true, "a", "b\nc"}));
    EXPECT_EQ(log.entries, nothing);
}

TEST_F(OptionsFile, WithoutAFileTheDefaultsStay) {
    for (const char* const path : {"absent", "folder", "device"}) {
        Options options{true, "a", "b"};
        log.EmptyLog();
        LoadOptions(system, {path}, options, log);
        EXPECT_EQ(options, (Options{true, "a", "b"}));
        EXPECT_EQ(log.entries, std::vector<std::string>{"No options found, using defaults."});
    }
}

TEST_F(OptionsFile, TheFirstFileThatExistsIsRead) {
    system.files["beside"] = Lines({"True", "beside.scp", ""});
    Options options;
    LoadOptions(system, {"own", "beside"}, options, log);
    EXPECT_EQ(options, (Options{true, "beside.scp", ""}));
    system.files["own"] = Lines({"False", "own.scp", ""});
    LoadOptions(system, {"own", "beside"}, options, log);
    EXPECT_EQ(options, (Options{false, "own.scp", ""}));
    EXPECT_EQ(log.entries, nothing);
}

TEST_F(OptionsFile, ReadsAWordOrANumberAsBoolean) {
    const std::vector<std::string> words[] = {{"false", " FALSE ", "0", "-0", " 0.0 ", "000000000000"},
                                              {"true", " TRUE ", "1", "-1", "0.4", " +0.01 ", "99999999999"}};
    for (const bool value : {false, true}) {
        for (const std::string& word : words[value]) {
            EXPECT_EQ(Loaded(Lines({word, "", ""}), {!value, "", ""}).blnTranslucent, value) << word;
            EXPECT_EQ(log.entries, nothing) << word;
        }
    }
    for (const char* const word : {"yes", "", "Truer", "Fals", "1x", "99999999999x"}) {
        EXPECT_EQ(Loaded(Lines({word, "in", "out"})), Options{}) << word;
        EXPECT_EQ(log.entries, Report(FailureKind::TypeMismatch, loadingModule)) << word;
    }
    EXPECT_EQ(log.failedWhere, "ini");
}

TEST_F(OptionsFile, KeepsWhatWasReadBeforeTheFileEnded) {
    const Options before{false, "a", "b"};
    for (const auto& [content, loaded] : std::vector<std::pair<std::string, Options>>{
             {"", before}, {"True\r\n", {true, "a", "b"}}, {"True\r\nin\r\n", {true, "in", "b"}}}) {
        EXPECT_EQ(Loaded(content, before), loaded);
        EXPECT_EQ(log.entries, Report(FailureKind::InputPastEnd, loadingModule));
    }
}

TEST_F(OptionsFile, APathStandsInTheCodePageWhereItIsReadBackTheSame) {
    ExpectInputLine("/Caf\xE9 \x80", "/Café €");
    EXPECT_EQ(Loaded(Lines({"0", "/Caf\xE9 \x80", "/Café"})), (Options{false, "/Café €", "/Café"}));

    for (const std::string path : {"/Ж", "/Ã©" /* é, in the code page's bytes */, "/\xE9 Ж"})
        ExpectInputLine(path, path);

    system.files["/Caf\xE9"];
    EXPECT_EQ(Loaded(Lines({"0", "/Caf\xE9", "/caf\xE9"})), (Options{false, "/Caf\xE9", "/café"}));
    ExpectInputLine("/Café", "/Café");  // not to be taken for the other file
}

TEST_F(OptionsFile, APathThatNoLineCanHoldLeavesTheFileAsItWas) {
    system.files["ini"] = "older";
    EXPECT_EQ(Saved({false, "", "a\rb"}), "older");
    EXPECT_EQ(log.entries, Report(FailureKind::BadFileNameOrNumber, savingModule));
}

}  // namespace
}  // namespace quillmere::test
