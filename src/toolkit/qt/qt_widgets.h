#pragma once

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <functional>

namespace quillmere {

// Widgets that take keys and clicks in another way than the toolkit's own.

/// A push button that Enter presses, too.
class PushWidget : public QPushButton {
 public:
    using QPushButton::QPushButton;

 protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// A radio button that leaves it to others what excludes what, and which button an arrow key leads to.
class OptionWidget : public QRadioButton {
 public:
    explicit OptionWidget(QWidget* parent);

    std::function<void(bool forward)> OnArrow = [](bool) {};

 protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// A label that can be clicked, and has a focus rectangle and the keys that belong to it.
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

/// A list that tells a row the user picked, by mouse or key and also when it was selected before, from
/// everything else that moves its selection.
class ListWidget : public QListWidget {
 public:
    using QListWidget::QListWidget;

    /// Raised with -1 when the user acted beside the rows.
    std::function<void(int row)> OnPick = [](int) {};
    /// Selects `row`, or nothing when it is -1.
    void ShowRow(int row);

 protected:
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
