#pragma once

#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <functional>

namespace quillmere {

// Widgets that handle keys and clicks in another way than those of Qt.

/// Drops the repeats of Enter, of access keys and, on buttons and links, of Space, in every window of the
/// program: a key that is held may have opened the box that it would then answer.
class HeldKeyFilter : public QObject {
 public:
    HeldKeyFilter();
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    bool Repeats(const QKeyEvent& press) const;

    int releasedKey_ = 0;   ///< the key that was released last; 0: none yet
    quint64 released_ = 0;  ///< when; 0: the system tells no times
};

/// A push button that Enter presses, as Space does.
class PushWidget : public QPushButton {
 public:
    using QPushButton::QPushButton;

 protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// A radio button that neither deselects others nor handles arrow keys itself.
class OptionWidget : public QRadioButton {
 public:
    explicit OptionWidget(QWidget* parent);

    std::function<void(bool forward)> OnArrow = [](bool) {};

 protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// A label that can be clicked with the mouse, Enter or Space, and shows when it has the focus.
class LinkWidget : public QLabel {
 public:
    explicit LinkWidget(QWidget* parent);

    std::function<void()> OnClick = [] {};

 protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

/// A menu in which only the left button chooses.
class MenuWidget : public QMenu {
 public:
    using QMenu::QMenu;

 protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
};

/// A list that reports which row the user picks by left button or keyboard, even if it is selected already,
/// and nothing else that changes the selection. The user cannot take the selection away.
class ListWidget : public QListWidget {
 public:
    using QListWidget::QListWidget;

    /// Raised with -1 for a click beside the rows.
    std::function<void(int row)> OnPick = [](int) {};
    /// Selects `row`, or nothing when it is -1.
    void ShowRow(int row);

 protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

 private:
    void PickIfMoved();

    int shownRow_ = -1;
};

}  // namespace quillmere
