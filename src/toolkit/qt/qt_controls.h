#pragma once

#include "toolkit/control.h"
#include "toolkit/event_gate.h"

#include <QWidget>
#include <memory>
#include <string>
#include <string_view>

namespace quillmere {

/// Shows one control in a widget and passes the widget's events to it through the gate.
class QtControlView : public ControlView {
 public:
    QtControlView(Control& control, QWidget& widget, EventGate& gate);

    /// As the kind of control that it is.
    template <class Kind = Control>
    Kind& Model() const {
        return static_cast<Kind&>(control_);
    }
    /// As the kind of widget that it is.
    template <class Kind = QWidget>
    Kind& Widget() const {
        return static_cast<Kind&>(widget_);
    }
    void Refresh(Aspect aspect) final;

 protected:
    virtual void ShowCaption() {}
    /// Shows one of the aspects that only some kinds of control have.
    virtual void ShowState(Aspect /*aspect*/) {}
    /// Calls `event`, which reports an event to the control; then shows `aspect` of the control, since the
    /// event may have changed only the widget.
    template <class Event>
    void Report(Aspect aspect, Event event) {
        gate_.Pass([&] {
            event();
            if (gate_.IsOpen()) Refresh(aspect);
        });
    }
    void Click() {
        Report(Aspect::Checked, [this] { control_.UserClicks(); });
    }

 private:
    void ShowHint();

    Control& control_;
    QWidget& widget_;
    EventGate& gate_;
};

/// Makes the widget of `control` as a child of `parent`, which owns it. The view must not outlive the widget.
std::unique_ptr<QtControlView> MakeControlView(Control& control, QWidget& parent, EventGate& gate);

/// From UTF-8.
QString ToQt(std::string_view text);
/// To UTF-8.
std::string FromQt(const QString& text);
/// From twips to logical pixels.
int ToPixels(int twips);

}  // namespace quillmere
