#include "toolkit/qt/qt_controls.h"

#include "toolkit/access_key.h"
#include "toolkit/qt/qt_widgets.h"
#include "toolkit/window.h"

#include <QCheckBox>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace quillmere {

QString ToQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string FromQt(const QString& text) {
    return text.toStdString();
}

int ToPixels(int twips) {
    return twips / twipsPerPixel;
}

QtControlView::QtControlView(Control& control, QWidget& widget, EventGate& gate)
    : control_(control), widget_(widget), gate_(gate) {}

void QtControlView::Refresh(Aspect aspect) {
    const EventGate::ProgramChange change(gate_);
    switch (aspect) {
        case Aspect::Caption:
            widget_.setAccessibleName(ToQt(control_.AccessibleName()));
            return ShowCaption();
        case Aspect::Enabled:
            return widget_.setEnabled(control_.Enabled());
        case Aspect::Focus:
            if (control_.HasFocus()) widget_.setFocus();
            return;
        default:
            return ShowState(aspect);
    }
}

namespace {

class LabelView : public QtControlView {
 public:
    LabelView(Control& control, QLabel& label, EventGate& gate)
        : QtControlView(control, label, gate), label_(label) {
        label.setTextFormat(Qt::PlainText);
        label.setAlignment(Qt::AlignLeft | Qt::AlignTop);
        // A label of one line does not wrap: a word slightly too long is cut off, not moved out of sight.
        label.setWordWrap(ToPixels(control.Place().height) >= 2 * label.fontMetrics().height());
    }

 private:
    void ShowCaption() override { label_.setText(ToQt(Model().Caption())); }

    QLabel& label_;
};

class LinkView : public LabelView {
 public:
    LinkView(Control& link, LinkWidget& widget, EventGate& gate) : LabelView(link, widget, gate) {
        widget.OnClick = [this] { Click(); };
    }
};

class FrameView : public QtControlView {
 public:
    FrameView(Control& frame, QGroupBox& box, EventGate& gate) : QtControlView(frame, box, gate), box_(box) {}

 private:
    void ShowCaption() override { box_.setTitle(ToQt(Model().Caption())); }

    QGroupBox& box_;
};

class ButtonView : public QtControlView {
 public:
    using Signal = void (QAbstractButton::*)(bool);
    /// `signal` reports a click.
    ButtonView(Control& control, QAbstractButton& button, EventGate& gate,
               Signal signal = &QAbstractButton::clicked)
        : QtControlView(control, button, gate), button_(button) {
        QObject::connect(&button, signal, [this] { Click(); });
    }

 protected:
    QAbstractButton& Button() const { return button_; }

 private:
    void ShowCaption() override { button_.setText(ToQt(Model().Caption())); }

    QAbstractButton& button_;
};

class CheckView : public ButtonView {
 public:
    /// Not clicked, which is not sent when assistive technology toggles the box.
    CheckView(CheckBox& box, QWidget& parent, EventGate& gate)
        : ButtonView(box, *new QCheckBox(&parent), gate, &QAbstractButton::toggled), box_(box) {}

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) Button().setChecked(box_.Checked());
    }

    CheckBox& box_;
};

class OptionView : public ButtonView {
 public:
    OptionView(OptionButton& option, OptionWidget& widget, EventGate& gate)
        : ButtonView(option, widget, gate), option_(option) {
        widget.OnArrow = [this](bool forward) {
            Report(Aspect::Checked, [&] { option_.UserPressesArrow(forward); });
        };
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) Button().setChecked(option_.Selected());
    }

    OptionButton& option_;
};

class LineTextView : public QtControlView {
 public:
    LineTextView(TextBox& box, QLineEdit& edit, EventGate& gate)
        : QtControlView(box, edit, gate), box_(box), edit_(edit) {
        // Not textEdited, which is not sent when assistive technology sets the text.
        QObject::connect(&edit, &QLineEdit::textChanged, [this](const QString& text) {
            Report(Aspect::Text, [&] { box_.UserTypes(FromQt(text)); });
        });
    }

 private:
    void ShowState(Aspect aspect) override {
        const QString text = ToQt(box_.Text());
        if (aspect == Aspect::Text && text != edit_.text()) edit_.setText(text);
    }

    TextBox& box_;
    QLineEdit& edit_;
};

/// Shows a new text only when Qt next looks for events, so that a log which grows by thousands of lines at
/// once is shown once.
class LinesTextView : public QtControlView {
 public:
    LinesTextView(TextBox& box, QPlainTextEdit& edit, EventGate& gate)
        : QtControlView(box, edit, gate), box_(box), edit_(edit), nextRound_(*new QTimer(&edit)) {
        nextRound_.setSingleShot(true);
        QObject::connect(&nextRound_, &QTimer::timeout, [this] { edit_.setPlainText(ToQt(box_.Text())); });
        edit.setReadOnly(true);
        edit.setUndoRedoEnabled(false);
        edit.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        edit.setTabChangesFocus(true);
        edit.setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        edit.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        const bool scrollable = box.TextStyle() == TextBox::Style::ReadOnlyLinesScrollable;
        edit.setVerticalScrollBarPolicy(scrollable ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Text && !nextRound_.isActive()) nextRound_.start(0);
    }

    TextBox& box_;
    QPlainTextEdit& edit_;
    QTimer& nextRound_;
};

class ListView : public QtControlView {
 public:
    ListView(ListBox& box, ListWidget& list, EventGate& gate)
        : QtControlView(box, list, gate), box_(box), list_(list) {
        list.setUniformItemSizes(true);
        list.OnPick = [this](int row) { Report(Aspect::Selection, [this, row] { Pick(row); }); };
    }

 private:
    void Pick(int row) {
        if (row >= 0) box_.UserSelects(row);
    }

    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Items) ShowItems();
        list_.ShowRow(box_.Selected());
    }

    /// Changes only the rows that differ.
    void ShowItems() {
        while (list_.count() > box_.Count())
            delete list_.takeItem(list_.count() - 1);
        for (int row = 0; row < box_.Count(); ++row) {
            const QString text = ToQt(box_.Items()[static_cast<std::size_t>(row)]);
            if (row == list_.count()) list_.addItem(text);
            if (list_.item(row)->text() != text) list_.item(row)->setText(text);
        }
    }

    ListBox& box_;
    ListWidget& list_;
};

std::unique_ptr<QtControlView> MakeTextBox(TextBox& box, QWidget& parent, EventGate& gate) {
    if (box.TextStyle() == TextBox::Style::SingleLine)
        return std::make_unique<LineTextView>(box, *new QLineEdit(&parent), gate);
    return std::make_unique<LinesTextView>(box, *new QPlainTextEdit(&parent), gate);
}

std::unique_ptr<QtControlView> MakeLine(Control& line, QWidget& parent, EventGate& gate) {
    auto* const frame = new QFrame(&parent);
    frame->setFrameStyle((line.Place().width == 0 ? QFrame::VLine : QFrame::HLine) | QFrame::Plain);
    return std::make_unique<QtControlView>(line, *frame, gate);
}

std::unique_ptr<QtControlView> MakePicture(Picture& picture, QWidget& parent, EventGate& gate) {
    auto* const label = new QLabel(&parent);
    const std::string_view jpeg = picture.Jpeg();
    QPixmap pixmap;
    pixmap.loadFromData(reinterpret_cast<const uchar*>(jpeg.data()), static_cast<uint>(jpeg.size()), "JPEG");
    label->setScaledContents(true);
    label->setPixmap(pixmap);
    return std::make_unique<QtControlView>(picture, *label, gate);
}

std::unique_ptr<QtControlView> MakeOfKind(Control& control, QWidget& parent, EventGate& gate) {
    switch (control.Kind()) {
        case ControlKind::Label:
            return std::make_unique<LabelView>(control, *new QLabel(&parent), gate);
        case ControlKind::Frame:
            return std::make_unique<FrameView>(control, *new QGroupBox(&parent), gate);
        case ControlKind::CheckBox:
            return std::make_unique<CheckView>(static_cast<CheckBox&>(control), parent, gate);
        case ControlKind::OptionButton:
            return std::make_unique<OptionView>(static_cast<OptionButton&>(control),
                                                *new OptionWidget(&parent), gate);
        case ControlKind::TextBox:
            return MakeTextBox(static_cast<TextBox&>(control), parent, gate);
        case ControlKind::ListBox:
            return std::make_unique<ListView>(static_cast<ListBox&>(control), *new ListWidget(&parent), gate);
        case ControlKind::PushButton:
            return std::make_unique<ButtonView>(control, *new PushWidget(&parent), gate);
        case ControlKind::Line:
            return MakeLine(control, parent, gate);
        case ControlKind::Picture:
            return MakePicture(static_cast<Picture&>(control), parent, gate);
        case ControlKind::LinkLabel:
            return std::make_unique<LinkView>(control, *new LinkWidget(&parent), gate);
    }
    return nullptr;
}

}  // namespace

std::unique_ptr<QtControlView> MakeControlView(Control& control, QWidget& parent, EventGate& gate) {
    std::unique_ptr<QtControlView> view = MakeOfKind(control, parent, gate);
    QWidget& widget = view->Widget();
    const Twips& place = control.Place();
    widget.setObjectName(ToQt(control.Name()));
    widget.setGeometry(ToPixels(place.left), ToPixels(place.top), std::max(1, ToPixels(place.width)),
                       std::max(1, ToPixels(place.height)));
    widget.setFocusPolicy(control.CanHaveFocus() ? Qt::StrongFocus : Qt::NoFocus);
    return view;
}

}  // namespace quillmere
