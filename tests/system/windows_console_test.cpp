#include "system/console.h"

#include <windows.h>
#include <gtest/gtest.h>
#include <winternl.h>

#include <utility>

namespace quillmere::test {
namespace {

/// A function of `library` that the headers do not declare.
template <class Function>
Function FunctionOf(const wchar_t* library, const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
}

TEST(WindowsConsole, NobodysLogOffHaltsARunWithoutAUser) {
    // As if this process ran in the session of the services. Works under Wine only.
    ULONG& sessionOfProcess = FunctionOf<PEB*(WINAPI*)()>(L"ntdll", "RtlGetCurrentPeb")()->SessionId;
    const ULONG before = std::exchange(sessionOfProcess, 0);
    CatchInterrupts();
    // What Windows calls in a thread of its own when something happens to the console.
    const auto tellHandlers = FunctionOf<LPTHREAD_START_ROUTINE>(L"kernel32", "CtrlRoutine");
    ASSERT_NE(tellHandlers, nullptr);
    const HANDLE thread = CreateThread(nullptr, 0, tellHandlers,
                                       reinterpret_cast<void*>(ULONG_PTR{CTRL_LOGOFF_EVENT}), 0, nullptr);
    constexpr DWORD patience = 60'000;  // milliseconds
    EXPECT_EQ(WaitForSingleObject(thread, patience), WAIT_OBJECT_0) << "the handler has returned";
    EXPECT_FALSE(InterruptRequested());
    CloseHandle(thread);
    sessionOfProcess = before;
}

}  // namespace
}  // namespace quillmere::test
