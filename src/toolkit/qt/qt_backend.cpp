#include "toolkit/qt/qt_backend.h"

#include "toolkit/qt/qt_accessibility.h"
#include "toolkit/qt/qt_widgets.h"
#include "toolkit/qt/qt_window.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFontDatabase>
#include <QPalette>
#include <QProxyStyle>
#include <QSessionManager>
#include <QUrl>
#include <QWindow>
#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

/// The first of these fonts that is installed. Their letters are as wide as those of the font for which the
/// places of the captions were made.
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

/// Every menu bar asks for the icon of a button that it shows when its menus do not fit. Here they always
/// fit, and making that icon would load the code for every picture format that Qt has.
class ClassicStyle : public QProxyStyle {
 public:
    explicit ClassicStyle(QObject* owner) : QProxyStyle("Windows") { setParent(owner); }
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                       const QWidget* widget) const override {
        if (icon == SP_ToolBarHorizontalExtensionButton) return {};
        return QProxyStyle::standardIcon(icon, option, widget);
    }
};

void ApplyLook() {
    constexpr int fontPixels = 11;
    QApplication::setStyle(new ClassicStyle(qApp));
    QApplication::setPalette(ClassicPalette());
    QFont font(FontFamily());
    font.setPixelSize(fontPixels);
    QApplication::setFont(font);
}

}  // namespace

/// Tells the backend what Qt is told by a session manager, where the desktop has one.
class QtBackend::SessionWatch : public QObject {
 public:
    explicit SessionWatch(QtBackend& backend) : backend_(backend) {
        qApp->installEventFilter(this);
        connect(qApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager& manager) {
            if (!backend_.SessionMayEnd() && manager.allowsInteraction()) manager.cancel();
        });
    }

    /// Qt sends this event when the session ends; the program does not.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != qApp || event->type() != QEvent::Quit) return false;
        backend_.EndSession();
        return true;
    }

 private:
    QtBackend& backend_;
};

bool OpenAddress(const std::string& address) {
    return QDesktopServices::openUrl(QUrl(ToQt(address)));
}

QtBackend::QtBackend(QtBackendOptions options)
    : options_(std::move(options)),
      prompts_(options_.nativeDialogs),
      calls_({[this](WindowHandle window, double opacity) { Find(window)->setWindowOpacity(opacity); },
              options_.openAddress}),
      sessionWatch_(std::make_unique<SessionWatch>(*this)),
      heldKeyFilter_(std::make_unique<HeldKeyFilter>()) {
    ApplyLook();
    InstallAccessibility();
    // Discard ends the program after the last window. Qt would count message boxes as windows, too.
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

bool QtBackend::SessionMayEnd() const {
    return std::ranges::all_of(
        windows_, [](const auto& shown) { return shown.second->Model().ReasonAgainstSessionEnd().empty(); });
}

void QtBackend::EndSession() {
    for (const auto& [handle, view] : windows_)
        view->Model().SessionEnds();
}

void QtBackend::Realize(Window& window) {
    auto view = std::make_unique<QtWindow>(window);
    window.SetView(view.get(), calls_.AddWindow());
    windows_[window.Handle()] = std::move(view);
}

void QtBackend::MakeVisible(Window& window) {
    QtWindow* const view = Find(window.Handle());
    if (view == nullptr) return;  // it was closed while it was loading
    QWidget* const below = QApplication::activeWindow();
    if (IsModal(window)) {
        view->setWindowModality(Qt::ApplicationModal);
        view->winId();  // makes the window handle
        if (below != nullptr) view->windowHandle()->setTransientParent(below->windowHandle());
    }
    view->show();
    view->activateWindow();
}

void QtBackend::RunModal(Window& window) {
    if (QtWindow* const view = Find(window.Handle())) view->RunUntilGone();
}

void QtBackend::Discard(Window& window) {
    const auto shown = windows_.find(window.Handle());
    if (shown == windows_.end()) return;
    QtWindow* const view = shown->second.release();
    windows_.erase(shown);
    calls_.RemoveWindow(window.Handle());
    window.SetView(nullptr, 0);
    view->LetGo();
    if (windows_.empty() && running_) QCoreApplication::exit(EXIT_SUCCESS);
}

void QtBackend::AskForAttention(Window& window) {
    QApplication::beep();
    if (QtWindow* const view = Find(window.Handle())) QApplication::alert(view);
}

/// Long work waits while a menu is open, as it does for a box or a dialog. Qt itself does not wait for a
/// menu.
void QtBackend::Yield() {
    if (!throttle_.Due()) return;
    QCoreApplication::processEvents();
    while (QApplication::activePopupWidget() != nullptr)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

QtWindow* QtBackend::Find(WindowHandle handle) const {
    const auto shown = windows_.find(handle);
    return shown == windows_.end() ? nullptr : shown->second.get();
}

}  // namespace quillmere
