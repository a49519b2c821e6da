#include "engine/mod_global.h"
#include "platform/win32/win32_api.h"
#include "platform/win32/win32_desktop.h"
#include "ui/frm_main.h"

int WINAPI WinMain(HINSTANCE /*module*/, HINSTANCE /*before*/, LPSTR /*arguments*/, int /*showCommand*/) {
    quillmere::modGlobal shared(quillmere::SystemFileSystem());
    quillmere::Win32Desktop desktop;
    quillmere::frmMain mainWindow(desktop, shared);
    mainWindow.Show();
    return desktop.Run();
}
