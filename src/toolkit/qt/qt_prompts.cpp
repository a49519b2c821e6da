#include "toolkit/qt/qt_prompts.h"

#include "toolkit/qt/qt_controls.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QMessageBox>
#include <QPointer>
#include <algorithm>
#include <memory>

namespace quillmere {

namespace {

QWidget* WindowBelow() {
    QWidget* const modal = QApplication::activeModalWidget();
    return modal != nullptr ? modal : QApplication::activeWindow();
}

/// A box or dialog whose parent is the window below it. The parent may be deleted while the prompt is open,
/// and then deletes the prompt.
template <class Prompt>
class Owned {
 public:
    Owned() : prompt_(new Prompt(WindowBelow())) {}
    ~Owned() { delete prompt_; }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    Prompt* operator->() const { return prompt_; }
    Prompt& operator*() const { return *prompt_; }
    bool IsGone() const { return prompt_.isNull(); }

 private:
    QPointer<Prompt> prompt_;
};

QMessageBox::Icon IconFor(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::Information:
            return QMessageBox::Information;
        case MessageIcon::Question:
            return QMessageBox::Question;
        case MessageIcon::Critical:
            break;
    }
    return QMessageBox::Critical;
}

MessageResult ResultFor(int button, MessageButtons buttons) {
    if (buttons == MessageButtons::Ok) return MessageResult::Ok;
    if (button == QMessageBox::Yes) return MessageResult::Yes;
    return button == QMessageBox::No ? MessageResult::No : MessageResult::Cancel;
}

/// "Script Files (*.scp)|*.scp" in Qt's form. The pattern is there in lower and in upper case, since some
/// dialogs distinguish the two.
QString FilterFor(const FilePattern& pair) {
    const QString description = ToQt(pair.description).section('(', 0, 0).trimmed();
    QString pattern = ToQt(pair.pattern);
    if (pattern == "*.*") pattern = "*";
    if (pattern.toLower() != pattern.toUpper()) pattern = pattern.toLower() + ' ' + pattern.toUpper();
    return description + " (" + pattern + ')';
}

/// Qt makes a box only as wide as its text. The window manager would then cut a longer title, whose font is
/// often bold. The title bar also has room for an icon and up to three buttons.
void MakeRoomForTitle(QMessageBox& box) {
    constexpr int iconAndButtons = 4;
    QFont font = QFontDatabase::systemFont(QFontDatabase::TitleFont);
    font.setBold(true);
    const QFontMetrics metrics(font);
    const int width = metrics.horizontalAdvance(box.windowTitle()) + iconAndButtons * metrics.height();
    auto& layout = dynamic_cast<QGridLayout&>(*box.layout());
    layout.addItem(new QSpacerItem(width, 0), layout.rowCount(), 0, 1, layout.columnCount());
}

bool MayReplace(const QString& path, const QString& title) {
    const Owned<QMessageBox> box;
    box->setObjectName(QtPrompts::overwriteQuestion);
    box->setWindowTitle(title);
    box->setIcon(QMessageBox::Warning);
    box->setTextFormat(Qt::PlainText);
    box->setText(QFileInfo(path).fileName() + " already exists.\nDo you want to replace it?");
    box->setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box->setDefaultButton(QMessageBox::No);
    MakeRoomForTitle(*box);
    return box->exec() == QMessageBox::Yes;
}

/// The default extension and the question about an existing file are not left to Qt: it adds the extension in
/// other cases than the program does, and some dialogs ask about the name without it.
void Prepare(QFileDialog& shown, const FileDialog& dialog, const QString& folder, bool native) {
    shown.setWindowTitle(ToQt(dialog.title));
    shown.setOption(QFileDialog::DontUseNativeDialog, !native);
    shown.setOption(QFileDialog::DontConfirmOverwrite);
    shown.setFileMode(QFileDialog::AnyFile);
    const bool saves = dialog.purpose == FileDialog::Purpose::Save;
    shown.setAcceptMode(saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    QStringList filters;
    for (const FilePattern& pair : PatternsOf(dialog))
        filters << FilterFor(pair);
    shown.setNameFilters(filters);
    if (!folder.isEmpty()) shown.setDirectory(folder);
}

}  // namespace

MessageResult QtPrompts::ShowMessage(const Message& message) {
    const Owned<QMessageBox> box;
    box->setWindowTitle(ToQt(message.title));
    box->setTextFormat(Qt::PlainText);
    box->setText(ToQt(message.text).replace("\r\n", "\n"));
    box->setIcon(IconFor(message.icon));
    const bool asks = message.buttons == MessageButtons::YesNoCancel;
    box->setStandardButtons(asks ? QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel
                                 : QMessageBox::StandardButtons(QMessageBox::Ok));
    box->setDefaultButton(asks ? QMessageBox::Yes : QMessageBox::Ok);
    MakeRoomForTitle(*box);
    return ResultFor(box->exec(), message.buttons);
}

std::string QtPrompts::ShowFileDialog(const FileDialog& dialog) {
    const Owned<QFileDialog> shown;
    Prepare(*shown, dialog, lastFolder_, nativeDialogs_);
    while (shown->exec() == QDialog::Accepted && !shown.IsGone()) {
        const QString picked = shown->selectedFiles().value(0);
        lastFolder_ = QFileInfo(picked).absolutePath();
        std::string path = WithDefaultExtension(dialog, QFile::encodeName(picked).toStdString());
        const QString named = QFile::decodeName(path.c_str());
        if (!dialog.overwritePrompt || !QFileInfo::exists(named) || MayReplace(named, ToQt(dialog.title)))
            return path;
    }
    return {};
}

}  // namespace quillmere
