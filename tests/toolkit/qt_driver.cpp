#include "tests/support/backend_driver.h"
#include "tests/support/temporary_folder.h"
#include "toolkit/qt/qt_backend.h"
#include "toolkit/qt/qt_widgets.h"
#include "toolkit/qt/qt_window.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QTextDocumentFragment>
#include <QTimer>
#include <QToolTip>
#include <array>
#include <stdexcept>

/// Called by the leak checker, if there is one: names libraries that do not free memory at the end of a
/// program.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

namespace quillmere::test {
namespace {

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

int QtKey(Key key) {
    static constexpr std::array inOrderOfKey = {Qt::Key_Tab,  Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space,
                                                Qt::Key_Home, Qt::Key_Left,   Qt::Key_Up,     Qt::Key_Right,
                                                Qt::Key_Down, Qt::Key_Delete, Qt::Key_F10};
    const auto place = static_cast<std::size_t>(key);
    return place < inOrderOfKey.size() ? inOrderOfKey.at(place) : static_cast<int>(key);
}

QMessageBox::StandardButton ButtonFor(MessageResult result) {
    static constexpr std::array inOrderOfResult = {QMessageBox::Ok, QMessageBox::Yes, QMessageBox::No,
                                                   QMessageBox::Cancel};
    return inOrderOfResult.at(static_cast<std::size_t>(result));
}

std::vector<std::string> RowsOf(const QAbstractItemModel& model, const QModelIndex& root) {
    std::vector<std::string> rows;
    for (int row = 0; row < model.rowCount(root); ++row)
        rows.push_back(FromQt(model.index(row, 0, root).data().toString()));
    return rows;
}

Message Seen(const QMessageBox& box) {
    const MessageIcon icon = box.icon() == QMessageBox::Information ? MessageIcon::Information
                             : box.icon() == QMessageBox::Question  ? MessageIcon::Question
                                                                    : MessageIcon::Critical;
    const bool asks = box.standardButtons() == (QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    return {FromQt(box.windowTitle()), FromQt(QString(box.text()).replace("\n", "\r\n")), icon,
            asks ? MessageButtons::YesNoCancel : MessageButtons::Ok};
}

/// Acts with mouse and keyboard. To find what waits for an answer, it looks every few milliseconds for a
/// modal window.
class QtDriver : public BackendDriver {
 public:
    QtDriver() {
        constexpr std::chrono::milliseconds interval{2};
        QObject::connect(
            &search_, &QTimer::timeout, &search_, [this] { FindModalWindow(); }, Qt::QueuedConnection);
        search_.start(interval);
    }
    ~QtDriver() override { Settle(); }
    Backend& Target() override { return backend_; }

    void ClickCloseBox(Window& window) override {
        ViewOf(window).close();
        Look();
    }
    void Drop(Window& window, const std::vector<std::string>& paths) override {
        QMimeData data;
        QList<QUrl> urls;
        for (const std::string& path : paths)
            urls << QUrl("file://localhost" + QByteArray::fromStdString(path).toPercentEncoding("/"));
        QtWindow& view = ViewOf(window);
        // Shift asks for a move.
        QDragEnterEvent enter({}, Qt::MoveAction | Qt::CopyAction, &data, {}, Qt::ShiftModifier);
        data.setUrls({QUrl("file://elsewhere/file")});
        QCoreApplication::sendEvent(&view, &enter);
        EXPECT_FALSE(enter.isAccepted());
        data.setUrls(urls);
        QCoreApplication::sendEvent(&view, &enter);
        if (!enter.isAccepted()) return;
        QDropEvent drop({}, Qt::MoveAction | Qt::CopyAction, &data, {}, Qt::ShiftModifier);
        QCoreApplication::sendEvent(&view, &drop);
        EXPECT_EQ(enter.dropAction() | drop.dropAction(), Qt::CopyAction) << "a move deletes the file";
    }
    bool EndSession(Window& /*window*/) override {
        QEvent quit(QEvent::Quit);
        if (backend_.SessionMayEnd()) QCoreApplication::sendEvent(qApp, &quit);
        return backend_.SessionMayEnd();
    }
    std::pair<int, int> HotSpot(const LinkLabel& link) override {
        const QPoint spot = WidgetOf(link).cursor().hotSpot();
        return {spot.x(), spot.y()};
    }
    double ShownOpacity(const Window& window) override { return ViewOf(window).windowOpacity(); }

 protected:
    bool Activate(const Window& window) override {
        QtWindow& view = ViewOf(window);
        const QWidget* const modal = QApplication::activeModalWidget();
        if (!view.isActiveWindow() && (modal == nullptr || modal == &view)) view.activateWindow();
        Settle();
        return true;
    }
    void ClickIn(const Control& control, int row, Mouse how) override {
        constexpr int inMark = 6;  // of check boxes and option buttons
        QWidget& widget = WidgetOf(control);
        if (row == ListBox::none) return ClickAt(widget, QPoint(inMark, widget.height() / 2), how);
        auto& list = dynamic_cast<QListWidget&>(widget);
        ClickAt(*list.viewport(), list.visualItemRect(list.item(row)).center(), how);
    }
    /// No repeat is marked: Qt does not know each of them as one.
    void Strike(Window& window, Held held, Key key, int repeats) override {
        static constexpr std::array modifiers = {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier,
                                                 Qt::AltModifier};
        if (auto* const menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget()))
            PrepareMenu(*menu, key);
        const bool isLetter = key >= Key{'A'} && key <= Key{'Z'};
        const QString text = isLetter ? QString(QChar(static_cast<char>(key)).toLower()) : "";
        for (int i = 0; i <= repeats; ++i) {
            for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
                if (!window.IsShown()) return;
                QKeyEvent event(type, QtKey(key), modifiers.at(static_cast<std::size_t>(held)), text);
                event.setTimestamp(time_);
                QCoreApplication::sendEvent(KeyTarget(window), &event);
            }
        }
        ++time_;
        Settle();
    }
    void Settle() override {
        for (int round = 0; round < 3; ++round) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    void Post(std::function<void()> act) override {
        QMetaObject::invokeMethod(&search_, std::move(act), Qt::QueuedConnection);
    }
    void Enter(Window& window, const std::string& text) override {
        for (const char32_t letter : ToQt(text).toStdU32String())
            QTest::sendKeyEvent(QTest::Click, KeyTarget(window), Qt::Key_unknown,
                                QString::fromUcs4(&letter, 1), Qt::NoModifier);
    }
    void CopyFromElsewhere(const std::string& text) override {
        QGuiApplication::clipboard()->setText(ToQt(text));
    }
    Appearance Shown(const Window& window) override {
        const QtWindow& view = ViewOf(window);
        return {.text = FromQt(view.windowTitle()), .takesFiles = view.acceptDrops()};
    }
    Appearance Shown(const MenuItem& item) override {
        const QAction& action = ViewOf(item.Parent().OwnerWindow()).ActionOf(item);
        return {.text = FromQt(action.text()), .checked = action.isChecked()};
    }
    Appearance Shown(const Control& control) override {
        QWidget& widget = WidgetOf(control);
        Appearance shown{.name = FromQt(widget.accessibleName()),
                         .hint = HintOf(widget),
                         .enabled = widget.isEnabled(),
                         .focused = widget.window()->focusWidget() == &widget,
                         .checked = widget.property("checked").toBool()};
        for (const char* const property : {"text", "title", "plainText"})
            shown.text += FromQt(widget.property(property).toString());
        if (const auto* const list = dynamic_cast<const QListWidget*>(&widget)) {
            shown.items = RowsOf(*list->model(), {});
            if (!list->selectedItems().isEmpty()) shown.selected = list->row(list->selectedItems().front());
        }
        return shown;
    }

 private:
    /// The window that gets a key pressed in `window`.
    static QWindow* KeyTarget(const Window& window) {
        QWidget* const popup = QApplication::activePopupWidget();
        return (popup == nullptr ? &ViewOf(window) : popup)->windowHandle();
    }
    /// A click as the window system reports it: with the window and the place in it.
    static void ClickAt(const QWidget& widget, const QPoint& place, Mouse how) {
        const QWidget& window = *widget.window();
        QTest::mouseClick(window.windowHandle(), how == Mouse::Right ? Qt::RightButton : Qt::LeftButton,
                          how == Mouse::LeftWithControl ? Qt::ControlModifier : Qt::NoModifier,
                          widget.mapTo(&window, place));
    }
    /// Home leads to the first item, which Qt leaves out, and the right button chooses nothing.
    static void PrepareMenu(QMenu& menu, Key key) {
        if (key == Key::Home) menu.setActiveAction(menu.actions().front());
        if (key != Key::Enter) return;
        ClickAt(menu, menu.actionGeometry(menu.activeAction()).center(), Mouse::Right);
        EXPECT_TRUE(menu.isVisible()) << "the right button has chosen";
    }
    static std::string HintOf(QWidget& widget) {
        if (widget.toolTip().isEmpty()) return FromQt(widget.accessibleDescription());
        QHelpEvent rest(QEvent::ToolTip, {}, {});
        QCoreApplication::sendEvent(&widget, &rest);
        const QString tip = QTextDocumentFragment::fromHtml(QToolTip::text()).toPlainText();
        EXPECT_EQ(tip, widget.accessibleDescription());
        return FromQt(tip);
    }

    /// Reacts to each modal window once. Called by a queued event, since the reaction may open another.
    void FindModalWindow() {
        QWidget* const modal = QApplication::activeModalWidget();
        if (modal == nullptr || !modal->isVisible() || modal->property("seen").toBool()) return;
        modal->setProperty("seen", true);
        if (auto* const box = dynamic_cast<QMessageBox*>(modal)) Answer(*box);
        if (auto* const dialog = dynamic_cast<QFileDialog*>(modal)) Answer(*dialog);
    }

    void Answer(QMessageBox& box) {
        QFont bold = QFontDatabase::systemFont(QFontDatabase::TitleFont);
        bold.setBold(true);
        EXPECT_GT(box.width(), QFontMetrics(bold).horizontalAdvance(box.windowTitle()) + 50)
            << "cuts its title";
        QTest::simulateEvent(box.focusWidget(), true, Qt::Key_Return, {}, "\r", true);
        EXPECT_TRUE(box.isVisible()) << "a held key has answered";
        const bool replaces = box.objectName() == QtPrompts::overwriteQuestion;
        EXPECT_NE(box.defaultButton(), box.button(replaces ? QMessageBox::Yes : QMessageBox::No));
        QAbstractButton* const button = box.button(ButtonFor(AnswerTo(Seen(box), replaces)));
        if (button == nullptr) ADD_FAILURE() << "the box has no such button";
        (button == nullptr ? box.buttons().back() : button)->click();
    }
    void Answer(QFileDialog& dialog) {
        const std::string path = PathFor(FromQt(dialog.windowTitle()), [&] {
            auto& list = *dialog.findChild<QListView*>("listView");
            return RowsOf(*list.model(), list.rootIndex());
        });
        if (!path.empty()) dialog.findChild<QLineEdit*>("fileNameEdit")->setText(ToQt(path));
        QDialog& shown = dialog;
        path.empty() ? shown.reject() : shown.accept();
        dialog.setProperty("seen", false);  // it is shown again if a file may not be replaced
    }

    Driven<QtBackend> backend_{
        *this, QtBackendOptions{.nativeDialogs = false, .openAddress = [this](const std::string& address) {
                                    opened.push_back(address);
                                    return true;
                                }}};
    QTimer search_;
    quint64 time_ = 1;  ///< of the next key; a repeat is pressed when it is released
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
    [[maybe_unused]] static const auto* const application = new QApplication(argumentCount, arguments);
    return std::make_unique<QtDriver>();
}

}  // namespace quillmere::test
