#pragma once

#include "engine/filter_pass.h"
#include "engine/mod_global.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_log.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::test {

/// A filter pass with all that it needs, in memory. It reads the file "in" and writes the file "out".
class PassRig : private PassWindow {
 public:
    explicit PassRig(PassObserver* observer = nullptr) : pass(shared, log, *this, observer) {
        settings.strInputFile = "in";
        settings.strOutputFile = "out";
    }

    MemoryFileSystem fileSystem;
    modGlobal shared{fileSystem};
    RecordingLog log;
    FilterSettings settings;
    std::vector<double> times = {0};  ///< what TimeOfDay returns; the last one is repeated
    std::function<void()> onYield = [] {};
    std::vector<std::string> events;  ///< boxes, focus changes and changes of the window's controls
    FilterPass pass;

    /// Runs a pass on `world` and returns the output.
    std::string Clean(const std::string& world) {
        fileSystem.files["in"] = world;
        outcome = pass.Run(settings);
        return fileSystem.files["out"];
    }
    PassOutcome outcome = PassOutcome::Busy;

    void AddItem(std::string_view code) { shared.filterSet.arrItems[items_++] = {"item", std::string(code)}; }
    void AddRectangle(std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2) {
        shared.filterSet.arrRectangles[rectangles_++] = {"rectangle", x1, y1, x2, y2};
    }

 private:
    void Yield() override { onYield(); }
    double TimeOfDay() override {
        const double time = times.front();
        if (times.size() > 1) times.erase(times.begin());
        return time;
    }
    void Refuse(std::string_view title, std::string_view text) override {
        events.push_back(std::string(title) + ": " + std::string(text));
    }
    void FocusFilter(FilterKind kind) override {
        if (kind == FilterKind::Facet) events.emplace_back("focus on facet");
    }
    void ShowPassActive(bool active) override { events.emplace_back(active ? "active" : "idle"); }

    std::size_t items_ = 0;
    std::size_t rectangles_ = 0;
};

}  // namespace quillmere::test
