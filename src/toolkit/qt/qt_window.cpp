#include "toolkit/qt/qt_window.h"

#include "toolkit/qt/qt_widgets.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QSysInfo>
#include <QTimer>
#include <QUrl>
#include <algorithm>

namespace quillmere {

namespace {

Qt::WindowFlags FlagsFor(Window::Border border) {
    const Qt::WindowFlags kind = border == Window::Border::FixedDialog ? Qt::Dialog : Qt::Window;
    return kind | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
           Qt::WindowCloseButtonHint;
}

/// The letter or digit, in lower case, pressed together with Alt alone; 0 for other keys.
char AltKey(const QKeyEvent& event) {
    if (event.modifiers() != Qt::AltModifier) return '\0';
    const int key = event.key();
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<char>('a' + (key - Qt::Key_A));
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<char>('0' + (key - Qt::Key_0));
    return '\0';
}

/// Whether the window of a message box, a file dialog or another modal window is open above `window`.
bool IsBlocked(const QWidget& window) {
    const QWidget* const modal = QApplication::activeModalWidget();
    return modal != nullptr && modal != &window;
}

/// Some programs name this computer in the address of a file, as "localhost" or in full.
bool IsFileHere(const QUrl& url) {
    const QString host = url.host();
    return url.isLocalFile() && (host.isEmpty() || host == "localhost" ||
                                 host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0);
}

/// Not toLocalFile, which puts the name of the computer into the path and changes bytes that are not UTF-8.
std::string PathOf(const QUrl& file) {
    return QByteArray::fromPercentEncoding(file.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

}  // namespace

QtWindow::QtWindow(Window& model)
    : QWidget(nullptr, FlagsFor(model.BorderStyle())), model_(model), deactivation_(new QTimer(this)) {
    setObjectName(ToQt(model.Name()));
    RefreshCaption();
    const int width = ToPixels(model.Width());
    const int height = ToPixels(model.Height());
    MakeMenus();
    const int barHeight = menuBar_ == nullptr ? 0 : menuBar_->heightForWidth(width);
    if (menuBar_ != nullptr) menuBar_->setGeometry(0, 0, width, barHeight);
    auto* const client = new QWidget(this);
    client->setGeometry(0, barHeight, width, height);
    setFixedSize(width, barHeight + height);
    MakeControls(*client);
    setAcceptDrops(model.TakesFiles());
    deactivation_->setSingleShot(true);
    connect(deactivation_, &QTimer::timeout, this, &QtWindow::ReportDeactivation);
    StartTimers();
}

QtWindow::~QtWindow() = default;

void QtWindow::MakeControls(QWidget& client) {
    for (Control* const control : model_.Controls()) {
        const Control* const frame = control->Parent().AsControl();
        QWidget& parent = frame == nullptr ? client : WidgetOf(*frame);
        auto& view = views_[control] = MakeControlView(*control, parent, gate_);
        view->Widget().installEventFilter(this);
        // Else a text box would take the name of a dropped file as text.
        if (model_.TakesFiles()) view->Widget().setAcceptDrops(false);
        control->SetView(view.get());
    }
}

void QtWindow::MakeMenus() {
    if (model_.Menus().empty()) return;
    menuBar_ = new QMenuBar(this);
    menuBar_->setNativeMenuBar(false);
    for (Menu* const menu : model_.Menus())
        menuBar_->addMenu(MakeMenu(*menu));
}

QMenu* QtWindow::MakeMenu(Menu& menu) {
    auto* const shown = new MenuWidget(ToQt(menu.Caption()), menuBar_);
    for (MenuItem* const item : menu.Items()) {
        QAction* const action =
            item->IsSeparator() ? shown->addSeparator() : shown->addAction(ToQt(item->Caption()));
        action->setMenuRole(QAction::NoRole);
        actions_[item] = action;
        if (item->IsSeparator()) continue;
        RefreshCheckMark(*item);
        connect(action, &QAction::triggered, this, [this, item] {
            gate_.Pass([&] {
                item->UserChooses();
                RefreshCheckMark(*item);
            });
        });
    }
    return shown;
}

void QtWindow::StartTimers() {
    for (Timer* const timer : model_.Timers()) {
        auto* const ticking = new QTimer(this);
        ticking->setTimerType(Qt::PreciseTimer);
        connect(ticking, &QTimer::timeout, this, [this, timer] { gate_.Pass([timer] { timer->OnTick(); }); });
        ticking->start(timer->Interval());
    }
}

void QtWindow::RunUntilGone() {
    QEventLoop loop;
    untilGone_ = &loop;
    loop.exec();
}

void QtWindow::LetGo() {
    for (const auto& [control, view] : views_)
        view->Model().SetView(nullptr);
    for (QTimer* const timer : findChildren<QTimer*>())
        timer->stop();
    if (untilGone_ != nullptr) untilGone_->quit();
    hide();
    gate_.Shut([this] { deleteLater(); });
}

void QtWindow::RefreshCaption() {
    setWindowTitle(ToQt(model_.Caption()));
}

/// An item without a check mark is not checkable, so that no empty box is drawn for it.
void QtWindow::RefreshCheckMark(const MenuItem& item) {
    ActionOf(item).setCheckable(item.Checked());
    ActionOf(item).setChecked(item.Checked());
}

void QtWindow::closeEvent(QCloseEvent* event) {
    gate_.Pass([this] { model_.UserCloses(); });
    event->setAccepted(!gate_.IsOpen());
}

/// Takes files of this computer and nothing else, and leaves them where they are: the program that they come
/// from would delete them after a move.
void QtWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    const bool local = !urls.isEmpty() && std::ranges::all_of(urls, IsFileHere);
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(local && !IsBlocked(*this));
}

void QtWindow::dropEvent(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    std::vector<std::string> paths;
    for (const QUrl& url : event->mimeData()->urls())
        paths.push_back(PathOf(url));
    gate_.Pass([&] { model_.UserDropsFiles(paths); });
}

bool QtWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate) NoteDeactivation();
    return ServesKey(*event) || QWidget::event(event);
}

bool QtWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        const auto view = std::ranges::find_if(
            views_, [&](const auto& entry) { return &entry.second->Widget() == watched; });
        if (view != views_.end()) gate_.Pass([&] { view->second->Model().UserFocuses(); });
    }
    return ServesKey(*event) || QWidget::eventFilter(watched, event);
}

/// Called for the Tab key, and by Qt itself when the control with the focus is hidden or disabled.
bool QtWindow::focusNextPrevChild(bool next) {
    bool moved = false;
    gate_.Pass([&] {
        const Control* const control = model_.UserPressesTab(!next);
        if (control == nullptr) return;
        WidgetOf(*control).setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        moved = true;
    });
    return moved;
}

bool QtWindow::ServesKey(QEvent& event) {
    return ServesAccessKey(event) || ServesEscape(event) || ServesMenuKey(event);
}

bool QtWindow::ServesEscape(QEvent& event) {
    if (event.type() != QEvent::KeyPress) return false;
    if (static_cast<const QKeyEvent&>(event).key() != Qt::Key_Escape) return false;
    bool served = false;
    gate_.Pass([&] { served = model_.UserPressesEscape(); });
    return served;
}

/// F10 opens the first menu. Qt leaves this key to the program.
bool QtWindow::ServesMenuKey(QEvent& event) {
    if (event.type() != QEvent::KeyPress || menuBar_ == nullptr) return false;
    const auto& keyEvent = static_cast<const QKeyEvent&>(event);
    if (keyEvent.key() != Qt::Key_F10 || keyEvent.modifiers() != Qt::NoModifier) return false;
    gate_.Pass([this] {
        if (model_.TakesInput()) menuBar_->setActiveAction(menuBar_->actions().front());
    });
    return true;
}

/// Takes the key before Qt treats it as an access key of its own or types it into a text box.
bool QtWindow::ServesAccessKey(QEvent& event) {
    if (event.type() != QEvent::ShortcutOverride && event.type() != QEvent::KeyPress) return false;
    const auto& keyEvent = static_cast<const QKeyEvent&>(event);
    const char key = AltKey(keyEvent);
    if (key == '\0') return false;
    event.accept();
    if (event.type() == QEvent::KeyPress) PressAccessKey(key);
    return true;
}

void QtWindow::PressAccessKey(char key) {
    gate_.Pass([&] {
        const Menu* const menu = model_.UserPressesAccessKey(key);
        if (menu == nullptr) return;
        const auto& menus = model_.Menus();
        const auto at = std::ranges::find(menus, menu) - menus.begin();
        menuBar_->setActiveAction(menuBar_->actions().at(at));
    });
}

/// Reported when Qt next looks for events: the window may then close itself, which must not happen while Qt
/// is still activating another one. The program's own message boxes and file dialogs do not count.
void QtWindow::NoteDeactivation() {
    const QWidget* const modal = QApplication::activeModalWidget();
    if (modal == nullptr || dynamic_cast<const QtWindow*>(modal) != nullptr) deactivation_->start(0);
}

void QtWindow::ReportDeactivation() {
    if (!isActiveWindow()) gate_.Pass([this] { model_.UserDeactivates(); });
}

}  // namespace quillmere
