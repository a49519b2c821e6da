#include "toolkit/qt/qt_backend.h"

#include "system/time_of_day.h"
#include "toolkit/qt/qt_accessibility.h"
#include "toolkit/qt/qt_window.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QPalette>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QUrl>
#include <QWindow>
#include <utility>

namespace quillmere {

namespace {

constexpr std::uint32_t versionRecordSize = 148;  // bytes
constexpr std::uint32_t majorVersion = 10;

/// The first of these fonts that is installed: their letters are as wide as the captions were measured with.
QString FontFamily() {
    const QStringList installed = QFontDatabase::families();
    for (const char* const family : {"MS Sans Serif", "Microsoft Sans Serif", "Liberation Sans", "Arial",
                                     "Nimbus Sans", "DejaVu Sans Condensed"}) {
        if (installed.contains(family)) return family;
    }
    return QApplication::font().family();
}

QPalette ClassicPalette() {
    const QColor face(0xD4, 0xD0, 0xC8);
    QPalette palette(Qt::black, face, Qt::white, QColor(0x80, 0x80, 0x80), QColor(0xA0, 0xA0, 0xA0),
                     Qt::black, Qt::white, Qt::white, face);
    palette.setColor(QPalette::Highlight, QColor(0x0A, 0x24, 0x6A));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::Base, face);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    return palette;
}

void ApplyLook() {
    constexpr int fontPixels = 11;
    QApplication::setStyle(QStyleFactory::create("Windows"));
    QApplication::setPalette(ClassicPalette());
    QFont font(FontFamily());
    font.setPixelSize(fontPixels);
    QApplication::setFont(font);
}

}  // namespace

bool OpenAddress(const std::string& address) {
    return QDesktopServices::openUrl(QUrl(ToQt(address)));
}

QtBackend::QtBackend(QtBackendOptions options)
    : options_(std::move(options)), prompts_(options_.nativeDialogs) {
    ApplyLook();
    InstallAccessibility();
    // The last window to close is the model's to tell; a message box that is open before the first is none.
    QApplication::setQuitOnLastWindowClosed(false);
}

QtBackend::~QtBackend() = default;

int QtBackend::Run() {
    if (windows_.empty()) return EXIT_SUCCESS;
    running_ = true;
    const int exitCode = QApplication::exec();
    running_ = false;
    return exitCode;
}

void QtBackend::Realize(Window& window) {
    auto view = std::make_unique<QtWindow>(window);
    window.SetView(view.get(), ++lastHandle_);
    windows_[lastHandle_].view = std::move(view);
}

void QtBackend::MakeVisible(Window& window) {
    const Shown* const shown = Find(window.Handle());
    if (shown == nullptr) return;  // it was closed while it was loading
    QtWindow& view = *shown->view;
    QWidget* const below = QApplication::activeWindow();
    if (IsModal(window)) {
        view.setWindowModality(Qt::ApplicationModal);
        view.winId();  // makes the window handle
        if (below != nullptr) view.windowHandle()->setTransientParent(below->windowHandle());
    }
    view.show();
    view.activateWindow();
}

void QtBackend::RunModal(Window& window) {
    if (const Shown* const shown = Find(window.Handle())) shown->view->RunUntilGone();
}

void QtBackend::Discard(Window& window) {
    const auto shown = windows_.find(window.Handle());
    if (shown == windows_.end()) return;
    QtWindow* const view = shown->second.view.release();
    windows_.erase(shown);
    window.SetView(nullptr, 0);
    view->LetGo();
    if (windows_.empty() && running_) QCoreApplication::exit(EXIT_SUCCESS);
}

void QtBackend::Yield() {
    if (throttle_.Due()) QCoreApplication::processEvents();
}

double QtBackend::TimeOfDay() {
    return SecondsSinceMidnight();
}

std::string QtBackend::ProgramFolder() {
    const QString beside = QCoreApplication::applicationDirPath();
    if (QFileInfo(beside).isWritable()) return QFile::encodeName(beside).toStdString();
    const QString own =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/quillmere";
    QDir().mkpath(own);
    return QFile::encodeName(own).toStdString();
}

QtBackend::Shown* QtBackend::Find(WindowHandle handle) {
    const auto shown = windows_.find(handle);
    return shown == windows_.end() ? nullptr : &shown->second;
}

bool QtBackend::GetVersionExA(VersionRecord& record) {
    if (record.dwOSVersionInfoSize != versionRecordSize) return false;
    record.dwMajorVersion = majorVersion;
    return true;
}

std::int32_t QtBackend::GetWindowLongA(WindowHandle window, int index) {
    const Shown* const shown = Find(window);
    return shown == nullptr || index != GWL_EXSTYLE_INDEX ? 0 : shown->style.exStyle;
}

std::int32_t QtBackend::SetWindowLongA(WindowHandle window, int index, std::int32_t value) {
    Shown* const shown = Find(window);
    if (shown == nullptr || index != GWL_EXSTYLE_INDEX) return 0;
    const std::int32_t before = std::exchange(shown->style.exStyle, value);
    ApplyOpacity(*shown);
    return before;
}

bool QtBackend::SetLayeredWindowAttributes(WindowHandle window, std::uint32_t /*colorKey*/,
                                           std::uint8_t alpha, std::uint32_t flags) {
    Shown* const shown = Find(window);
    if (shown == nullptr) return false;
    if ((flags & LWA_ALPHA_FLAG) != 0) shown->style.alpha = alpha;
    ApplyOpacity(*shown);
    return true;
}

void QtBackend::ApplyOpacity(const Shown& shown) {
    shown.view->setWindowOpacity(shown.style.Opacity());
}

std::intptr_t QtBackend::ShellExecuteA(WindowHandle /*owner*/, const std::string& /*verb*/,
                                       const std::string& file, const std::string& /*parameters*/,
                                       const std::string& /*directory*/, int /*showCommand*/) {
    constexpr std::intptr_t success = 33;
    constexpr std::intptr_t noProgramForIt = 31;
    return options_.openAddress(file) ? success : noProgramForIt;
}

}  // namespace quillmere
