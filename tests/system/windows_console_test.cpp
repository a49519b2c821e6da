#include "system/console.h"

#include <windows.h>
#include <gtest/gtest.h>
#include <winternl.h>

namespace quillmere::test {
namespace {

template <class Function>
Function SystemFunction(const wchar_t* library, const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
}

TEST(WindowsConsole, NobodysLogOffHaltsARunWithoutAUser) {
    // As if this process ran in the session of the services. Works under Wine only.
    SystemFunction<PEB*(WINAPI*)()>(L"ntdll", "RtlGetCurrentPeb")()->SessionId = 0;
    DWORD session = 1;
    ProcessIdToSessionId(GetCurrentProcessId(), &session);
    if (session != 0) GTEST_SKIP() << "needs to run as a service";
    CatchInterrupts();
    // What Windows calls in a thread of its own when something happens to the console.
    const auto tellHandlers = SystemFunction<LPTHREAD_START_ROUTINE>(L"kernel32", "CtrlRoutine");
    ASSERT_NE(tellHandlers, nullptr);
    const HANDLE thread = CreateThread(nullptr, 0, tellHandlers,
                                       reinterpret_cast<void*>(ULONG_PTR{CTRL_LOGOFF_EVENT}), 0, nullptr);
    constexpr DWORD patience = 2000;  // milliseconds
    EXPECT_EQ(WaitForSingleObject(thread, patience), WAIT_OBJECT_0) << "the handler has returned";
    EXPECT_FALSE(InterruptRequested());
    CloseHandle(thread);
}

}  // namespace
}  // namespace quillmere::test
