#include "engine/mod_global.h"
#include "icon_png.h"
#include "system/program_folder.h"
#include "toolkit/qt/qt_backend.h"
#include "ui/frm_main.h"

#include <QApplication>
#include <QBuffer>
#include <QIcon>
#include <QImageReader>
#include <QPixmap>

namespace {

/// The format is known. To detect it would load the code for every picture format that Qt has.
QIcon ProgramIcon() {
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(iconPng), sizeof iconPng);
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "PNG");
    reader.setAutoDetectImageFormat(false);
    return QPixmap::fromImageReader(&reader);
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
