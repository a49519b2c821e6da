#include "ui/mod_translucent.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace quillmere::test {
namespace {

/// Answers as told and writes down every call with its arguments.
class RecordingSystem : public SystemCalls {
 public:
    std::uint32_t majorVersion = 0;  ///< 0: the query fails
    std::int32_t style = 0;
    std::vector<std::string> calls;

    bool GetVersionExA(VersionRecord& record) override {
        Add("version", {record.dwOSVersionInfoSize});
        if (majorVersion > 0) record.dwMajorVersion = majorVersion;
        return majorVersion > 0;
    }
    std::int32_t GetWindowLongA(WindowHandle window, int index) override {
        Add("get", {static_cast<std::int64_t>(window), index});
        return style;
    }
    std::int32_t SetWindowLongA(WindowHandle window, int index, std::int32_t value) override {
        Add("set", {static_cast<std::int64_t>(window), index});
        style = value;
        return 0;
    }
    bool SetLayeredWindowAttributes(WindowHandle window, std::uint32_t colorKey, std::uint8_t alpha,
                                    std::uint32_t flags) override {
        Add("attributes", {static_cast<std::int64_t>(window), colorKey, alpha, flags});
        return false;
    }
    std::intptr_t ShellExecuteA(WindowHandle, const std::string&, const std::string&, const std::string&,
                                const std::string&, int) override {
        return 0;
    }

 private:
    void Add(std::string call, std::initializer_list<std::int64_t> arguments) {
        for (const std::int64_t argument : arguments)
            call += " " + std::to_string(argument);
        calls.push_back(call);
    }
};

TEST(ModTranslucent, ChangesNothingButTheLayeredStyle) {
    constexpr std::int32_t otherStyles = ~WS_EX_LAYERED_STYLE;  // the sign bit among them
    RecordingSystem system;
    system.style = otherStyles;
    system.majorVersion = 5;
    for (const bool on : {true, true, false, false}) {
        system.calls.clear();
        ApplyTranslucency(system, 7, on);
        EXPECT_EQ(system.style, on ? -1 : otherStyles);
        EXPECT_EQ(system.calls, (std::vector<std::string>{"version 148", "get 7 -20", "set 7 -20",
                                                          "attributes 7 0 200 2"}));
    }
}

TEST(ModTranslucent, NeedsWindows2000) {
    RecordingSystem system;
    for (const std::uint32_t version : {0U, 4U, 5U, 10U}) {
        system.majorVersion = version;
        EXPECT_EQ(SupportsTranslucency(system), version >= 5) << version;
    }
    system.majorVersion = 4;
    system.calls.clear();
    ApplyTranslucency(system, 7, true);
    EXPECT_EQ(system.calls, std::vector<std::string>{"version 148"});
}

}  // namespace
}  // namespace quillmere::test
