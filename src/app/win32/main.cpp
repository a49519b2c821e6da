#include "engine/mod_global.h"
#include "system/program_folder.h"
#include "toolkit/win32/win32_api.h"
#include "toolkit/win32/win32_backend.h"
#include "ui/frm_main.h"

int WINAPI WinMain(HINSTANCE /*module*/, HINSTANCE /*before*/, LPSTR /*arguments*/, int /*showCommand*/) {
    quillmere::modGlobal shared(quillmere::SystemFileSystem());
    quillmere::Win32Backend backend;
    quillmere::frmMain mainWindow(backend, shared, quillmere::FoldersForSettings());
    mainWindow.Show();
    return backend.Run();
}
