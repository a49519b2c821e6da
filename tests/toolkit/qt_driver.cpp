#include "tests/support/queueing_driver.h"
#include "tests/support/temporary_folder.h"
#include "toolkit/qt/qt_backend.h"
#include "toolkit/qt/qt_widgets.h"
#include "toolkit/qt/qt_window.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTest>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QToolTip>
#include <array>
#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>

/// Called by the leak checker, if there is one: names libraries that do not free memory at the end of a
/// program.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

namespace quillmere::test {
namespace {

/// Calls each function that it is given from an event of its own.
class Events : public QObject {
 public:
    void Post(std::function<void()> act) {
        acts_.push_back(std::move(act));
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) return QObject::event(event);
        const std::function<void()> act = std::move(acts_.front());
        acts_.pop_front();
        act();
        return true;
    }

 private:
    std::deque<std::function<void()>> acts_;
};

/// Records file dialogs, and delivers events at a Yield for which one was queued.
class DrivenBackend : public QtBackend {
 public:
    using NextEvent = std::function<std::optional<std::function<void()>>()>;
    DrivenBackend(BackendDriver& driver, NextEvent nextEvent, QtBackendOptions options)
        : QtBackend(std::move(options)), driver_(driver), nextEvent_(std::move(nextEvent)) {}

    std::string ShowFileDialog(const FileDialog& dialog) override {
        driver_.dialogs.push_back(dialog);
        return QtBackend::ShowFileDialog(dialog);
    }
    void Yield() override {
        auto event = nextEvent_();
        if (!event) return QtBackend::Yield();
        arriving_.Post(std::move(*event));
        QCoreApplication::processEvents();
    }

 private:
    BackendDriver& driver_;
    NextEvent nextEvent_;
    Events arriving_;
};

void Settle() {
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

/// A click as the window system reports it: with the window and the place in it.
void ClickAt(QWidget& widget, const QPoint& place, Mouse how = Mouse::Left) {
    QWidget& window = *widget.window();
    QTest::mouseClick(window.windowHandle(), how == Mouse::Right ? Qt::RightButton : Qt::LeftButton,
                      how == Mouse::LeftWithControl ? Qt::ControlModifier : Qt::NoModifier,
                      widget.mapTo(&window, place));
    Settle();
}

QtWindow& ViewOf(const Window& window) {
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        auto* const view = dynamic_cast<QtWindow*>(widget);
        if (view != nullptr && view->isVisible() && &view->Model() == &window) return *view;
    }
    throw std::logic_error("the window " + window.Name() + " is not shown");
}

QWidget& WidgetOf(const Control& control) {
    return ViewOf(control.OwnerWindow()).WidgetOf(control);
}

template <class Widget>
Widget& WidgetOf(const Control& control) {
    return dynamic_cast<Widget&>(WidgetOf(control));
}

/// The window that gets a key pressed in `window`.
QWindow* KeyTarget(const Window& window) {
    if (QWidget* const popup = QApplication::activePopupWidget()) return popup->windowHandle();
    QtWindow& view = ViewOf(window);
    if (window.TakesInput() && !view.isActiveWindow()) {
        view.activateWindow();
        Settle();
    }
    return view.windowHandle();
}

Qt::Key QtKey(Key key) {
    static constexpr std::array inOrderOfKey = {Qt::Key_Tab,    Qt::Key_Backtab, Qt::Key_Space,
                                                Qt::Key_Return, Qt::Key_Escape,  Qt::Key_Up,
                                                Qt::Key_Down};
    return inOrderOfKey.at(static_cast<std::size_t>(key));
}

QMessageBox::StandardButton ButtonFor(MessageResult result) {
    static constexpr std::array inOrderOfResult = {QMessageBox::Ok, QMessageBox::Yes, QMessageBox::No,
                                                   QMessageBox::Cancel};
    return inOrderOfResult.at(static_cast<std::size_t>(result));
}

SeenMessage Seen(const QMessageBox& box) {
    const MessageIcon icon = box.icon() == QMessageBox::Information ? MessageIcon::Information
                             : box.icon() == QMessageBox::Question  ? MessageIcon::Question
                                                                    : MessageIcon::Critical;
    const bool asks = box.standardButtons() == (QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    return {FromQt(box.windowTitle()), FromQt(QString(box.text()).replace("\n", "\r\n")), icon,
            asks ? MessageButtons::YesNoCancel : MessageButtons::Ok};
}

/// Acts with mouse and keyboard. To find what waits for an answer, it looks every few milliseconds for a
/// modal window.
class QtDriver : public QueueingDriver {
 public:
    QtDriver() {
        constexpr std::chrono::milliseconds interval{2};
        QObject::connect(&search_, &QTimer::timeout, [this] { FindModalWindow(); });
        search_.start(interval);
    }
    ~QtDriver() override { Settle(); }
    Backend& Target() override { return backend_; }

    void Click(Control& control) override {
        constexpr int inMark = 6;  // of check boxes and option buttons
        QWidget& widget = WidgetOf(control);
        ClickAt(widget, QPoint(inMark, widget.height() / 2));
    }
    void ClickItem(ListBox& list, int index, Mouse how) override {
        auto& widget = WidgetOf<QListWidget>(list);
        widget.scrollToItem(widget.item(index));
        ClickAt(*widget.viewport(), widget.visualItemRect(widget.item(index)).center(), how);
    }
    void Type(TextBox& box, const std::string& text) override {
        Click(box);
        if (!ShownFocus(box)) return;
        QWindow* const window = KeyTarget(box.OwnerWindow());
        QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_Delete);
        for (const char32_t letter : ToQt(text).toStdU32String())
            QTest::sendKeyEvent(QTest::Click, window, Qt::Key_unknown, QString::fromUcs4(&letter, 1),
                                Qt::NoModifier);
        Settle();
    }
    void Paste(TextBox& box, const std::string& text) override {
        Click(box);
        QWindow* const window = KeyTarget(box.OwnerWindow());
        QGuiApplication::clipboard()->setText(ToQt(text));
        QTest::keyClick(window, Qt::Key_Home);
        QTest::keyClick(window, Qt::Key_V, Qt::ControlModifier);
        Settle();
    }
    void Press(Window& window, Key key, int repeats) override {
        const QPointer<QWindow> target = KeyTarget(window);
        const auto modifiers = key == Key::BackTab ? Qt::ShiftModifier : Qt::NoModifier;
        for (int i = 0; i <= repeats && !target.isNull(); ++i) {
            // No repeat is marked: Qt does not know each of them as one.
            SendKey(*target, {QEvent::KeyPress, QtKey(key), modifiers});
            ++time_;
            if (!target.isNull()) SendKey(*target, {QEvent::KeyRelease, QtKey(key), modifiers});
        }
        ++time_;
        Settle();
    }
    void PressAccessKey(Window& window, char key) override {
        SendKey(*KeyTarget(window), {QEvent::KeyPress, QChar(key).toUpper().unicode(), Qt::AltModifier});
        ++time_;
        Settle();
    }
    void Choose(MenuItem& item) override {
        QtWindow& view = ViewOf(item.Parent().OwnerWindow());
        QAction& action = view.ActionOf(item);
        QMenu* const menu = qobject_cast<QMenu*>(action.parent());
        QMenuBar& bar = *view.MenuBar();
        QWindow* const target = KeyTarget(item.Parent().OwnerWindow());
        QTest::keyClick(target, Qt::Key_F10);
        for (qsizetype i = 0; i < bar.actions().indexOf(menu->menuAction()); ++i)
            QTest::keyClick(target, Qt::Key_Right);
        if (!menu->isVisible()) return;
        const QPoint place = menu->actionGeometry(&action).center();
        ClickAt(*menu, place, Mouse::Right);
        EXPECT_TRUE(menu->isVisible()) << "the right button has chosen";
        ClickAt(*menu, place);
    }
    void ClickCloseBox(Window& window) override {
        ViewOf(window).close();
        Settle();
    }
    void Drop(Window& window, const std::vector<std::string>& paths) override {
        QMimeData data;
        QList<QUrl> urls;
        for (const std::string& path : paths)
            urls << QUrl("file://localhost" + QByteArray::fromStdString(path).toPercentEncoding("/"));
        QtWindow& view = ViewOf(window);
        EXPECT_EQ(view.acceptDrops(), window.TakesFiles());
        QDragEnterEvent enter({}, Qt::MoveAction | Qt::CopyAction, &data, {}, {});
        data.setUrls({QUrl("file://elsewhere/file")});
        QCoreApplication::sendEvent(&view, &enter);
        EXPECT_FALSE(enter.isAccepted());
        data.setUrls(urls);
        QCoreApplication::sendEvent(&view, &enter);
        QDropEvent drop({}, enter.dropAction(), &data, {}, {});
        if (enter.isAccepted()) QCoreApplication::sendEvent(&view, &drop);
    }
    bool EndSession(Window& /*window*/) override {
        QEvent quit(QEvent::Quit);
        if (backend_.SessionMayEnd()) QCoreApplication::sendEvent(qApp, &quit);
        return backend_.SessionMayEnd();
    }
    void Deactivate(Window& /*window*/) override {
        QWidget otherProgram;
        otherProgram.show();
        otherProgram.activateWindow();
        Settle();
    }
    void Wait(std::chrono::milliseconds time) override { QTest::qWait(static_cast<int>(time.count())); }

    std::string ShownText(const Control& control) override {
        Settle();
        QWidget& widget = WidgetOf(control);
        if (auto* const lines = dynamic_cast<QPlainTextEdit*>(&widget))
            return FromQt(lines->toPlainText().replace("\n", "\r\n"));
        if (auto* const line = dynamic_cast<QLineEdit*>(&widget)) return FromQt(line->text());
        return FromQt(dynamic_cast<QLabel&>(widget).text());
    }
    std::string ShownHint(const Control& control) override {
        QWidget& widget = WidgetOf(control);
        QHelpEvent rest(QEvent::ToolTip, {}, {});
        QCoreApplication::sendEvent(&widget, &rest);
        const QString tip = QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText();
        EXPECT_EQ(tip, widget.accessibleDescription());
        return FromQt(QString(tip).replace("\n", "\r\n"));
    }
    bool ShownEnabled(const Control& control) override { return WidgetOf(control).isEnabled(); }
    bool ShownChecked(const Control& control) override {
        return WidgetOf<QAbstractButton>(control).isChecked();
    }
    bool ShownChecked(const MenuItem& item) override {
        return ViewOf(item.Parent().OwnerWindow()).ActionOf(item).isChecked();
    }
    std::vector<std::string> ShownItems(const ListBox& list) override {
        const auto& widget = WidgetOf<QListWidget>(list);
        std::vector<std::string> items;
        items.reserve(static_cast<std::size_t>(widget.count()));
        for (int row = 0; row < widget.count(); ++row)
            items.push_back(FromQt(widget.item(row)->text()));
        return items;
    }
    int ShownSelection(const ListBox& list) override {
        const auto& widget = WidgetOf<QListWidget>(list);
        const auto selected = widget.selectedItems();
        return selected.isEmpty() ? ListBox::none : widget.row(selected.front());
    }
    std::string ShownTitle(const Window& window) override { return FromQt(ViewOf(window).windowTitle()); }
    bool ShownFocus(const Control& control) override {
        return ViewOf(control.OwnerWindow()).focusWidget() == &WidgetOf(control);
    }
    Pixel HotSpot(const LinkLabel& link) override {
        const QPoint spot = WidgetOf(link).cursor().hotSpot();
        return {spot.x(), spot.y()};
    }
    double ShownOpacity(const Window& window) override { return ViewOf(window).windowOpacity(); }

 private:
    /// Reacts to each modal window once, from an event of its own since the reaction may open another.
    void FindModalWindow() {
        QWidget* const modal = QApplication::activeModalWidget();
        if (modal == nullptr || !modal->isVisible() || modal->property("seen").toBool()) return;
        modal->setProperty("seen", true);
        reactions_.Post([this, found = QPointer<QWidget>(modal)] {
            if (auto* const box = dynamic_cast<QMessageBox*>(found.data())) Answer(*box);
            if (auto* const dialog = dynamic_cast<QFileDialog*>(found.data())) Answer(*dialog);
            if (auto* const view = dynamic_cast<QtWindow*>(found.data())) ActIn(view->Model());
        });
    }

    void Answer(QMessageBox& box) {
        QFont bold = QFontDatabase::systemFont(QFontDatabase::TitleFont);
        bold.setBold(true);
        EXPECT_GT(box.width(), QFontMetrics(bold).horizontalAdvance(box.windowTitle()) + 50)
            << "cuts its title";
        QTest::simulateEvent(box.focusWidget(), true, Qt::Key_Return, {}, "\r", true);
        EXPECT_TRUE(box.isVisible()) << "a held key has answered";
        if (box.objectName() == QtPrompts::overwriteQuestion)
            return PressButton(*box.button(MayReplace() ? QMessageBox::Yes : QMessageBox::No));
        const std::optional<MessageResult> result = AnswerTo(Seen(box));
        QAbstractButton* const button = result ? box.button(ButtonFor(*result)) : nullptr;
        if (result && button == nullptr) ADD_FAILURE() << "the box has no such button";
        PressButton(button == nullptr ? *box.buttons().back() : *button);
    }

    void Answer(QFileDialog& dialog) {
        const std::string path = PathFor(FromQt(dialog.windowTitle()));
        const auto accept =
            dialog.acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save : QDialogButtonBox::Open;
        if (!path.empty()) dialog.findChild<QLineEdit*>("fileNameEdit")->setText(ToQt(path));
        auto* const buttons = dialog.findChild<QDialogButtonBox*>();
        PressButton(*buttons->button(path.empty() ? QDialogButtonBox::Cancel : accept));
        dialog.setProperty("seen", false);  // it is shown again if a file may not be replaced
    }

    void SendKey(QWindow& target, QKeyEvent key) const {
        key.setTimestamp(time_);
        QCoreApplication::sendEvent(&target, &key);
    }

    static void PressButton(QAbstractButton& button) { ClickAt(button, button.rect().center()); }

    DrivenBackend backend_{*this,
                           [this] { return TakeYieldAct(); },
                           {.nativeDialogs = false,
                            .endProcess = [] { ADD_FAILURE() << "the program was ended"; },
                            .openAddress =
                                [this](const std::string& address) {
                                    opened.push_back(address);
                                    return true;
                                }}};
    QTimer search_;
    quint64 time_ = 1;  ///< of the next key; a repeat is pressed when it is released
    Events reactions_;
};

}  // namespace

std::unique_ptr<BackendDriver> MakeBackendDriver() {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // Where Qt saves what it remembers about file dialogs.
    static const TemporaryFolder settings;
    qputenv("XDG_CONFIG_HOME", settings.Path().c_str());
    static int argumentCount = 1;
    static char programName[] = "tests";
    static char* arguments[] = {programName, nullptr};
    // Never deleted: when the program ends, its destructor would use objects that are already destroyed.
    static const QApplication* const application = new QApplication(argumentCount, arguments);
    static_cast<void>(application);
    return std::make_unique<QtDriver>();
}

}  // namespace quillmere::test
