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
const Entries nothing;
const char* const loadingModule = "Error in options loading module.  Pffft....";
const char* const savingModule = "Error in options saving module.  Pffft....";

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
    const std::string before = system.files["ini"];
    EXPECT_EQ(log.entries, nothing);
    EXPECT_EQ(Saved({false, "", "a\rb"}), before) << "no line can hold that path";
    EXPECT_EQ(log.entries, Report(FailureKind::BadFileNameOrNumber, savingModule));
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
    const Entries words[] = {{" FALSE ", "0", "-0", " 0.0 ", "000000000000"},
                             {" TRUE ", "1", "-1", "0.4", "99999999999"}};
    for (const bool value : {false, true}) {
        for (const std::string& word : words[value]) {
            EXPECT_EQ(Loaded(Lines({word, "", ""}), {!value, "", ""}).blnTranslucent, value) << word;
            EXPECT_EQ(log.entries, nothing) << word;
        }
    }
    for (const char* const word : {"yes", "", "Truer", "99999999999x"}) {
        EXPECT_EQ(Loaded(Lines({word, "in", "out"})), Options{}) << word;
        EXPECT_EQ(log.entries, Report(FailureKind::TypeMismatch, loadingModule)) << word;
    }
    EXPECT_EQ(log.failedWhere, "ini");
    EXPECT_EQ(Loaded("True\r\nin\r\n", {false, "a", "b"}), (Options{true, "in", "b"}));
    EXPECT_EQ(log.entries, Report(FailureKind::InputPastEnd, loadingModule));
}

TEST_F(OptionsFile, APathStandsInTheCodePageWhereItIsReadBackTheSame) {
    const auto lineOf = [this](const std::string& path) {
        const std::string content = Saved({false, path, ""});
        EXPECT_EQ(Loaded(content).strInputFile, path);
        return content.substr(7, content.size() - 11);  // between "False" and the empty line
    };
    system.files["/\xE9 Ж"];
    EXPECT_EQ(lineOf("/Café €"), "/Caf\xE9 \x80");
    for (const std::string path : {"/Ж", "/Ã©" /* é, in the code page's bytes */, "/\xE9 Ж"})
        EXPECT_EQ(lineOf(path), path);
    system.files["/Caf\xE9"];
    EXPECT_EQ(lineOf("/Café"), "/Café") << "not to be taken for the other file";
    EXPECT_EQ(Loaded(Lines({"0", "/Caf\xE9", "/caf\xE9"})), (Options{false, "/Caf\xE9", "/café"}));
}

}  // namespace
}  // namespace quillmere::test
