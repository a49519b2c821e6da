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
#include <array>
#include <cstddef>

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
        case Aspect::Hint:
            return ShowHint();
        case Aspect::Enabled:
            return widget_.setEnabled(control_.Enabled());
        case Aspect::Focus:
            if (control_.HasFocus()) widget_.setFocus();
            return;
        default:
            return ShowState(aspect);
    }
}

/// As HTML: Qt would take a plain text that looks like HTML for it. Lines are not broken.
void QtControlView::ShowHint() {
    const QString hint = ToQt(control_.Hint()).replace("\r\n", "\n");
    widget_.setToolTip(hint.isEmpty() ? hint : "<p style='white-space:pre'>" + hint.toHtmlEscaped() + "</p>");
    widget_.setAccessibleDescription(hint);
}

namespace {

class LabelView : public QtControlView {
 public:
    LabelView(Control& control, QLabel& label, EventGate& gate) : QtControlView(control, label, gate) {
        label.setTextFormat(Qt::PlainText);
        label.setAlignment(Qt::AlignLeft | Qt::AlignTop);
        // A label of one line does not wrap: a word slightly too long is cut off, not moved out of sight.
        label.setWordWrap(ToPixels(control.Place().height) >= 2 * label.fontMetrics().height());
    }

 private:
    void ShowCaption() override { Widget<QLabel>().setText(ToQt(Model().Caption())); }
};

class LinkView : public LabelView {
 public:
    LinkView(Control& link, LinkWidget& widget, EventGate& gate) : LabelView(link, widget, gate) {
        widget.OnClick = [this] { Click(); };
    }
};

class FrameView : public QtControlView {
    using QtControlView::QtControlView;
    void ShowCaption() override { Widget<QGroupBox>().setTitle(ToQt(Model().Caption())); }
};

class ButtonView : public QtControlView {
 public:
    using Signal = void (QAbstractButton::*)(bool);
    /// `signal` reports a click.
    ButtonView(Control& control, QAbstractButton& button, EventGate& gate,
               Signal signal = &QAbstractButton::clicked)
        : QtControlView(control, button, gate) {
        QObject::connect(&button, signal, [this] { Click(); });
    }

 private:
    void ShowCaption() override { Widget<QAbstractButton>().setText(ToQt(Model().Caption())); }
};

class CheckView : public ButtonView {
 public:
    /// Not clicked, which is not sent when assistive technology toggles the box.
    CheckView(Control& box, QCheckBox& widget, EventGate& gate)
        : ButtonView(box, widget, gate, &QAbstractButton::toggled) {}

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) Widget<QCheckBox>().setChecked(Model<CheckBox>().Checked());
    }
};

class OptionView : public ButtonView {
 public:
    OptionView(Control& option, OptionWidget& widget, EventGate& gate) : ButtonView(option, widget, gate) {
        widget.OnArrow = [this](bool forward) {
            Report(Aspect::Checked, [&] { Model<OptionButton>().UserPressesArrow(forward); });
        };
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Checked) Widget<OptionWidget>().setChecked(Model<OptionButton>().Selected());
    }
};

class LineTextView : public QtControlView {
 public:
    LineTextView(Control& box, QLineEdit& edit, EventGate& gate) : QtControlView(box, edit, gate) {
        // Not textEdited, which is not sent when assistive technology sets the text.
        QObject::connect(&edit, &QLineEdit::textChanged, [this, &edit](const QString& text) {
            const int caret = edit.cursorPosition();
            Report(Aspect::Text,
                   [&] { Model<TextBox>().UserTypes(FromQt(text.left(caret)), FromQt(text.mid(caret))); });
        });
    }

 private:
    void ShowState(Aspect aspect) override {
        auto& edit = Widget<QLineEdit>();
        const QString text = ToQt(Model<TextBox>().Text());
        if (aspect == Aspect::Text && text != edit.text()) edit.setText(text);
    }
};

/// Shows a new text only when Qt next looks for events, so that a log which grows by thousands of lines at
/// once is shown once.
class LinesTextView : public QtControlView {
 public:
    LinesTextView(Control& box, QPlainTextEdit& edit, EventGate& gate)
        : QtControlView(box, edit, gate), nextRound_(*new QTimer(&edit)) {
        nextRound_.setSingleShot(true);
        QObject::connect(&nextRound_, &QTimer::timeout,
                         [this, &edit] { edit.setPlainText(ToQt(Model<TextBox>().Text())); });
        edit.setReadOnly(true);
        edit.setUndoRedoEnabled(false);
        edit.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        edit.setTabChangesFocus(true);
        edit.setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        edit.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        const bool scrollable = Model<TextBox>().TextStyle() == TextBox::Style::ReadOnlyLinesScrollable;
        edit.setVerticalScrollBarPolicy(scrollable ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Text && !nextRound_.isActive()) nextRound_.start(0);
    }

    QTimer& nextRound_;
};

class ListView : public QtControlView {
 public:
    ListView(Control& box, ListWidget& list, EventGate& gate) : QtControlView(box, list, gate) {
        list.setUniformItemSizes(true);
        list.OnPick = [this](int row) {
            Report(Aspect::Selection, [&] { Model<ListBox>().UserSelects(row); });
        };
    }

 private:
    void ShowState(Aspect aspect) override {
        if (aspect == Aspect::Items) ShowItems(Model<ListBox>(), Widget<ListWidget>());
        Widget<ListWidget>().ShowRow(Model<ListBox>().Selected());
    }

    /// Changes only the rows that differ.
    static void ShowItems(const ListBox& box, ListWidget& list) {
        while (list.count() > box.Count())
            delete list.takeItem(list.count() - 1);
        for (int row = 0; row < box.Count(); ++row) {
            const QString text = ToQt(box.Items()[static_cast<std::size_t>(row)]);
            if (row == list.count()) list.addItem(text);
            if (list.item(row)->text() != text) list.item(row)->setText(text);
        }
    }
};

class LineView : public QtControlView {
 public:
    LineView(Control& line, QFrame& frame, EventGate& gate) : QtControlView(line, frame, gate) {
        frame.setFrameStyle((line.Place().width == 0 ? QFrame::VLine : QFrame::HLine) | QFrame::Plain);
    }
};

class PictureView : public QtControlView {
 public:
    PictureView(Control& picture, QLabel& label, EventGate& gate) : QtControlView(picture, label, gate) {
        const std::string_view jpeg = Model<Picture>().Jpeg();
        QPixmap pixmap;
        pixmap.loadFromData(reinterpret_cast<const uchar*>(jpeg.data()), static_cast<uint>(jpeg.size()),
                            "JPEG");
        label.setScaledContents(true);
        label.setPixmap(pixmap);
    }
};

template <class View, class Shown>
std::unique_ptr<QtControlView> Make(Control& control, QWidget& parent, EventGate& gate) {
    return std::make_unique<View>(control, *new Shown(&parent), gate);
}

/// In the order of ControlKind.
constexpr std::array makersOfKinds = {
    Make<LabelView, QLabel>,        Make<FrameView, QGroupBox>,    Make<CheckView, QCheckBox>,
    Make<OptionView, OptionWidget>, Make<LineTextView, QLineEdit>, Make<LinesTextView, QPlainTextEdit>,
    Make<ListView, ListWidget>,     Make<ButtonView, PushWidget>,  Make<LineView, QFrame>,
    Make<PictureView, QLabel>,      Make<LinkView, LinkWidget>,
};
static_assert(makersOfKinds.size() == controlKindCount);

}  // namespace

std::unique_ptr<QtControlView> MakeControlView(Control& control, QWidget& parent, EventGate& gate) {
    auto view = makersOfKinds.at(static_cast<std::size_t>(control.Kind()))(control, parent, gate);
    QWidget& widget = view->Widget();
    const Twips& place = control.Place();
    widget.setObjectName(ToQt(control.Name()));
    widget.setGeometry(ToPixels(place.left), ToPixels(place.top), std::max(1, ToPixels(place.width)),
                       std::max(1, ToPixels(place.height)));
    widget.setFocusPolicy(control.CanHaveFocus() ? Qt::StrongFocus : Qt::NoFocus);
    return view;
}

}  // namespace quillmere
