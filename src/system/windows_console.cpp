#include "base/failure_report.h"
#include "system/console.h"
#include "system/windows_handle.h"
#include "system/windows_wide_text.h"

#include <windows.h>
#include <shellapi.h>

#include <atomic>

namespace quillmere {

namespace {

std::atomic<bool> interruptRequested = false;

/// Whether the program runs where no user ever logs on, as services and many scheduled tasks do. There it is
/// told when any user logs off, without being told which one.
bool RunsWithoutUser() {
    DWORD session = 0;
    return ProcessIdToSessionId(GetCurrentProcessId(), &session) != FALSE && session == 0;
}

/// Windows calls this on a thread of its own. When the console closes, Windows ends the program as soon as
/// this returns, so it waits: the run can end by itself in the seconds that Windows allows.
BOOL WINAPI NoteInterrupt(DWORD event) {
    if (event == CTRL_LOGOFF_EVENT && RunsWithoutUser()) return TRUE;
    const bool again = interruptRequested.exchange(true);
    if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) return again ? FALSE : TRUE;
    Sleep(INFINITE);
    return TRUE;
}

/// Sets the console to UTF-8 until the program ends.
class Utf8Console {
 public:
    Utf8Console() : before_(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
    ~Utf8Console() {
        if (before_ != 0) SetConsoleOutputCP(before_);
    }
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;

 private:
    UINT before_;
};

/// Whether both lead to one file. A console or a pipe is no file.
bool AreOneFile(const windows::Handle& one, const windows::Handle& other) {
    if (!one.IsOpen() || !one.IsOnDisk() || !other.IsOpen() || !other.IsOnDisk()) return false;
    bool same = false;
    TrapFailure([&] { same = one.State().IsSameFile(other.State()); });
    return same;
}

bool LeadsTo(DWORD stream, const std::string& path) {
    const auto wide = WideFromValidUtf8(path);
    return wide &&
           AreOneFile(windows::DuplicateStream(stream, path), windows::TryOpen(*wide, path, windows::toAsk));
}

}  // namespace

void CatchInterrupts() {
    SetConsoleCtrlHandler(NoteInterrupt, TRUE);
}

bool InterruptRequested() {
    return interruptRequested.load(std::memory_order_relaxed);
}

/// Those of main are in a code page that lacks most characters, except on the newest versions of Windows.
std::vector<std::string> ProgramArguments(int /*count*/, const char* const* /*arguments*/) {
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(Utf8FromWide(wide[i]));
    LocalFree(wide);
    return arguments;
}

void PrepareTerminal() {
    static const Utf8Console console;
}

bool StandardErrorIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

bool IsStandardOutput(const std::string& path) {
    return LeadsTo(STD_OUTPUT_HANDLE, path);
}

bool IsStandardError(const std::string& path) {
    return LeadsTo(STD_ERROR_HANDLE, path);
}

bool StandardStreamsAreOne() {
    return AreOneFile(windows::DuplicateStream(STD_OUTPUT_HANDLE, "standard output"),
                      windows::DuplicateStream(STD_ERROR_HANDLE, "standard error"));
}

}  // namespace quillmere
