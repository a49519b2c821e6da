#include "toolkit/qt/qt_widgets.h"

#include "toolkit/hand_pointer.h"

#include <QApplication>
#include <QBitmap>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>

namespace quillmere {

namespace {

bool IsEnter(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

QCursor Hand() {
    const HandPointer hand = MakeHandPointer();
    const auto toBitmap = [](const HandPointer::Bits& bits) {
        return QBitmap::fromData({HandPointer::size, HandPointer::size}, bits.data(), QImage::Format_Mono);
    };
    return {toBitmap(hand.black), toBitmap(hand.opaque), HandPointer::hotX, HandPointer::hotY};
}

}  // namespace

HeldKeyFilter::HeldKeyFilter() {
    qApp->installEventFilter(this);
}

bool HeldKeyFilter::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (event->type() == QEvent::KeyRelease) {
        releasedKey_ = key.key();
        released_ = key.timestamp();
        return false;
    }
    const bool clicks = key.key() == Qt::Key_Space && (dynamic_cast<QPushButton*>(watched) != nullptr ||
                                                       dynamic_cast<LinkWidget*>(watched) != nullptr);
    return (IsEnter(key) || key.modifiers() == Qt::AltModifier || clicks) && Repeats(key);
}

/// An X server reports each repeat as a release and a press at the same time. Qt calls the press a repeat
/// only if it has arrived when Qt handles the release.
bool HeldKeyFilter::Repeats(const QKeyEvent& press) const {
    return press.isAutoRepeat() ||
           (released_ != 0 && press.timestamp() == released_ && press.key() == releasedKey_);
}

void PushWidget::keyPressEvent(QKeyEvent* event) {
    if (!IsEnter(*event)) return QPushButton::keyPressEvent(event);
    click();
}

OptionWidget::OptionWidget(QWidget* parent) : QRadioButton(parent) {
    setAutoExclusive(false);
}

void OptionWidget::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Down:
        case Qt::Key_Right:
            return OnArrow(true);
        case Qt::Key_Up:
        case Qt::Key_Left:
            return OnArrow(false);
        default:
            QRadioButton::keyPressEvent(event);
    }
}

LinkWidget::LinkWidget(QWidget* parent) : QLabel(parent) {
    QFont underlined = font();
    underlined.setUnderline(true);
    setFont(underlined);
    QPalette blue = palette();
    blue.setColor(QPalette::WindowText, QColor(0, 0, 255));
    setPalette(blue);
    setCursor(Hand());
}

void LinkWidget::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(event->button() == Qt::LeftButton);
}

void LinkWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) OnClick();
}

void LinkWidget::keyPressEvent(QKeyEvent* event) {
    if (!IsEnter(*event) && event->key() != Qt::Key_Space) return QLabel::keyPressEvent(event);
    OnClick();
}

void LinkWidget::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    if (!hasFocus()) return;
    QPainter painter(this);
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.backgroundColor = palette().color(QPalette::Window);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}

void MenuWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) QMenu::mouseReleaseEvent(event);
}

void ListWidget::ShowRow(int row) {
    shownRow_ = row;
    setCurrentRow(row);
    if (row < 0) return clearSelection();
    item(row)->setSelected(true);
}

void ListWidget::PickIfMoved() {
    if (currentRow() != shownRow_) OnPick(currentRow());
}

/// Qt would let Ctrl take the selection away.
QItemSelectionModel::SelectionFlags ListWidget::selectionCommand(const QModelIndex& index,
                                                                 const QEvent* /*event*/) const {
    return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
}

void ListWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    QListWidget::mousePressEvent(event);
    OnPick(indexAt(event->position().toPoint()).row());
}

void ListWidget::mouseMoveEvent(QMouseEvent* event) {
    QListWidget::mouseMoveEvent(event);
    PickIfMoved();
}

void ListWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    QListWidget::mouseReleaseEvent(event);
    PickIfMoved();
}

void ListWidget::keyPressEvent(QKeyEvent* event) {
    QListWidget::keyPressEvent(event);
    PickIfMoved();
}

/// Qt makes the first row the current one, so that Down would lead to the second. This undoes it.
void ListWidget::focusInEvent(QFocusEvent* event) {
    QListWidget::focusInEvent(event);
    ShowRow(shownRow_);
}

}  // namespace quillmere
