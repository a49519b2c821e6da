#include "batch/restore_run.h"

#include "tests/support/batch_rig.h"

#include <array>

namespace quillmere::test {
namespace {

TEST_F(Batch, RestoresRemovedBlocksBeforeTheEnd) {
    const std::string cut = "nor is it in REMOVED, so one may be cut short; --force goes on";
    // No output stands for a failure. The error is a part of what is said, if something is.
    for (const auto& [removed, input, output, error, option] : std::vector<std::array<std::string, 5>>{
             {"[A b]\nX=1\n\n", "text\n\n[A c]\n\n [EOF] \n\n", "text\n\n[A c]\n\n[A b]\nX=1\n\n [EOF] \n\n"},
             {"[A b]\r\n\r\nstray\r\n", "[A c]\n[EOF]", "[A c]\n\n[A b]\n\nstray\n[EOF]"},
             {"stray\n[A b]\nX=1", "[A c]\r\r\n[EOF]\r\n",
              "[A c]\r\r\nstray\r\n[A b]\r\nX=1\r\n\r\n[EOF]\r\n"},
             {"[A b]\r\nP=1\r\nX=1\r\n", "[A c]\r\n\r\n[EOF]", "[A c]\r\n\r\n[A b]\r\nP=1\r\nX=1\r\n[EOF]"},
             {"[A b]\n[EOF]\n", "[A c]\n[EOF]\nX=1", "[A c]\n[EOF]\nX=1\n\n[A b]\n[EOF]\n\n"},
             {"\nx\r\n", "[A c]\r\n\r [EOF]", "[A c]\r\n\r\r\n\nx\r\n [EOF]", "--lf or --crlf"},
             {"", "", "", cut},
             {"[A b]\n\n", "[A c]\n\n", "", cut},
             {"[A b]\n\n", "[A c]\n\n", "[A c]\n\n[A b]\n\n", "", "--force"},
             {"[A b]\r\nX\n\r\n\r\n", "[EOF]\n", "",
              "gone, line 3: Invalid procedure call or argument (5). A"},
             {"[A b]\r\nX\n\r\n\r\n", "[EOF]\r\n", "[A b]\r\nX\n\r\n\r\n[EOF]\r\n", "--lf or --crlf"},
             {"stray\n\n" + std::string(70000, 'x') + "\r\n", "[EOF]\r\n", "",
              "gone, line 3: Invalid procedure call or argument (5). A line"},
             {"\x1F\x8B", "[EOF]\n", "", "gone: it is compressed with gzip; unpack it first\n"}}) {
        SCOPED_TRACE(removed + "into\n" + input);
        system.files = {{"gone", removed}, {"world", input}, {"out", "old"}};
        EXPECT_EQ(Run("restore " + option + " --backup gone world out"),
                  output.empty() ? exitFailed : exitComplete);
        EXPECT_EQ(system.files["out"], output.empty() ? "old" : output);
        EXPECT_EQ(system.files["out~"], output.empty() ? "" : "old");
        EXPECT_EQ(err.str().empty(), error.empty()) << err.str();
        EXPECT_NE(err.str().find(error), std::string::npos) << err.str();
    }
    system.files["gone"] = "stray\n\n[A b]\n\n[A c]\n";
    system.files["standard input"] = "[EOF]\n";
    EXPECT_EQ(Run("restore gone - -"), exitComplete);
    EXPECT_EQ(system.files["standard output"], "stray\n[A b]\n\n[A c]\n\n[EOF]\n");
    EXPECT_EQ(out.str(), "Restored 2 blocks and 1 line outside blocks.\n");
    system.beforeOperation = [this] { ++system.state.written; };
    EXPECT_EQ(Run("restore gone world out"), exitFailed);
    EXPECT_NE(err.str().find("world (changed while it was read): "), std::string::npos) << err.str();
    system.files["gone"] = "";
    system.beforeOperation = [this] { interrupted = system.files.contains("out.tmp"); };
    EXPECT_EQ(Run("restore gone world out"), exitHalted) << "while INPUT is copied";
    EXPECT_EQ(out.str(), "Halt command issued.\n");
}

}  // namespace
}  // namespace quillmere::test
