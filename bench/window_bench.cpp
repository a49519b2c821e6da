// Times the program's windows on Qt, for bench/compare. The first two modes exit once the window is shown, so
// that the caller can time the process. The others print their name and milliseconds:
//
//     window_bench empty                   an empty Qt window
//     window_bench open                    the main window
//     window_bench pass INPUT OUTPUT LIST  a pass with the item filter
//     window_bench halt INPUT OUTPUT LIST  from Halt until the pass is over
//     window_bench list LIST               loading a filter list
//     window_bench log                     a log entry after 10,000 of them

#include "engine/mod_global.h"
#include "filters/list_file.h"
#include "system/program_folder.h"
#include "toolkit/qt/qt_backend.h"
#include "ui/frm_main.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

using namespace quillmere;

namespace {

using Arguments = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double MillisecondsOf(const std::function<void()>& work) {
    const auto start = Clock::now();
    work();
    return MillisecondsSince(start);
}

/// The main window, ready for Run: files named, item filter ticked, list loaded. The window takes the file
/// names from the options file beside this program.
struct Rig {
    explicit Rig(const Arguments& files) {
        const std::string folder = FoldersForSettings().front();
        std::ofstream(folder + "/DSCPOPTS.INI", std::ios::binary) << "False\r\n"
                                                                  << files.at(1) << "\r\n"
                                                                  << files.at(2) << "\r\n";
        window.emplace(backend, shared, std::vector{folder});
        window->Show();
        if (files.size() > 3) LoadFilterList(shared.objReader, files[3], shared.filterSet, log);
        window->chkItems.UserClicks();
        QApplication::processEvents();
    }

    QtBackend backend;
    modGlobal shared{SystemFileSystem()};
    StatusLog log;
    std::optional<frmMain> window;
};

void TimePass(const Arguments& arguments) {
    Rig rig(arguments);
    std::cout << "pass " << MillisecondsOf([&] { rig.window->cmdRun.UserClicks(); }) << '\n';
}

void TimeHalt(const Arguments& arguments) {
    Rig rig(arguments);
    // A timer clicks Halt in place of the user. It fires late when the pass does not yield in time, so count
    // from when it was due.
    const auto clicked = Clock::now() + std::chrono::milliseconds(30);
    QTimer user;
    user.setTimerType(Qt::PreciseTimer);
    user.setSingleShot(true);
    QObject::connect(&user, &QTimer::timeout, [&rig] { rig.window->cmdHalt.UserClicks(); });
    user.start(30);
    rig.window->cmdRun.UserClicks();
    std::cout << "halt " << MillisecondsSince(clicked) << '\n';
}

void TimeList(const Arguments& arguments) {
    modGlobal shared(SystemFileSystem());
    StatusLog log;
    const double milliseconds =
        MillisecondsOf([&] { LoadFilterList(shared.objReader, arguments.at(1), shared.filterSet, log); });
    std::cout << "list " << milliseconds << '\n';
}

void TimeLog() {
    constexpr int before = 10'000;
    constexpr int timed = 1000;
    Rig rig({"log", "", ""});
    const auto addEntries = [&rig](int count) {
        for (int i = 0; i < count; ++i)
            rig.window->cmdHalt.OnClick();
        QApplication::processEvents();
    };
    addEntries(before);
    std::cout << "log " << MillisecondsOf([&] { addEntries(timed); }) / timed << '\n';
}

/// Exits the event loop once the window that `open` makes is shown.
int TimeOpening(const std::function<void()>& open) {
    open();
    QTimer nextRound;
    QObject::connect(&nextRound, &QTimer::timeout, [] { QCoreApplication::exit(EXIT_SUCCESS); });
    nextRound.start(0);
    return QApplication::exec();
}

int Run(const Arguments& arguments) {
    const std::string& what = arguments.at(0);
    if (what == "pass") {
        TimePass(arguments);
    } else if (what == "halt") {
        TimeHalt(arguments);
    } else if (what == "list") {
        TimeList(arguments);
    } else if (what == "log") {
        TimeLog();
    } else if (what == "open") {
        modGlobal shared(SystemFileSystem());
        QtBackend backend;
        frmMain window(backend, shared, FoldersForSettings());
        return TimeOpening([&] { window.Show(); });
    } else {
        QWidget window;
        return TimeOpening([&] { window.show(); });
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    return Run(Arguments(argv + 1, argv + argc));
}
