#include "engine/mod_global.h"
#include "icon_png.h"
#include "system/program_folder.h"
#include "toolkit/qt/qt_backend.h"
#include "ui/frm_main.h"

#include <QApplication>
#include <QIcon>
#include <QPixmap>

namespace {

QIcon ProgramIcon() {
    QPixmap picture;
    picture.loadFromData(iconPng, sizeof iconPng, "PNG");
    return picture;
}

}  // namespace

int main(int argc, char** argv) {
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    const QApplication application(argc, argv);
    QApplication::setApplicationName("Quillmere");
    QApplication::setDesktopFileName("quillmere");
    QApplication::setWindowIcon(ProgramIcon());
    quillmere::modGlobal shared(quillmere::SystemFileSystem());
    quillmere::QtBackend backend;
    quillmere::frmMain mainWindow(backend, shared, quillmere::FoldersForSettings());
    mainWindow.Show();
    return backend.Run();
}
