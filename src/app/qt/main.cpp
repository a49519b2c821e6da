#include "engine/mod_global.h"
#include "platform/qt/qt_desktop.h"
#include "ui/frm_main.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    const QApplication application(argc, argv);
    QApplication::setApplicationName("Quillmere");
    quillmere::modGlobal shared(quillmere::SystemFileSystem());
    quillmere::QtDesktop desktop;
    quillmere::frmMain mainWindow(desktop, shared);
    mainWindow.Show();
    return desktop.Run();
}
