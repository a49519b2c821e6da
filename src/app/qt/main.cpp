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
#include <QStringList>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace {

/// While one of these exists, a start that fails is reported in one line and ends the program with 1. Qt
/// itself would print several lines and abort. If the start succeeds, the messages of Qt so far are printed.
class StartReport {
 public:
    StartReport() { qInstallMessageHandler(Take); }
    ~StartReport() {
        qInstallMessageHandler(nullptr);
        for (const QString& line : lines_)
            std::fprintf(stderr, "%s\n", qUtf8Printable(line));
    }
    StartReport(const StartReport&) = delete;
    StartReport& operator=(const StartReport&) = delete;

 private:
    static void Take(QtMsgType type, const QMessageLogContext& context, const QString& message) {
        if (lines_.empty()) reason_ = message.simplified();  // the others follow from the first
        lines_.append(qFormatLogMessage(type, context, message));
        if (type != QtFatalMsg) return;
        std::fprintf(stderr, "quillmere: no window can be opened (%s); quillmere-batch needs no display\n",
                     qUtf8Printable(reason_));
        std::_Exit(EXIT_FAILURE);
    }

    static inline QStringList lines_;
    static inline QString reason_;
};

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
    std::optional<StartReport> start(std::in_place);
    const QApplication application(argc, argv);
    QApplication::setApplicationName("Quillmere");
    QApplication::setDesktopFileName("quillmere");
    QApplication::setWindowIcon(ProgramIcon());
    quillmere::modGlobal shared(quillmere::SystemFileSystem());
    quillmere::QtBackend backend;
    quillmere::frmMain mainWindow(backend, shared, quillmere::FoldersForSettings());
    mainWindow.Show();
    start.reset();
    return backend.Run();
}
