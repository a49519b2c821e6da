#pragma once

#include "toolkit/control.h"
#include "toolkit/event_gate.h"

#include <QWidget>
#include <memory>
#include <string>
#include <string_view>

namespace quillmere {

/// One control's widget, which shows the model and reports the user through the gate.
class QtControlView : public ControlView {
 public:
    QtControlView(Control& control, QWidget& widget, EventGate& gate);

    Control& Model() const { return control_; }
    QWidget& Widget() const { return widget_; }
    void Refresh(Aspect aspect) final;

 protected:
    virtual void ShowCaption() {}
    /// The aspects that only some kinds have.
    virtual void ShowState(Aspect /*aspect*/) {}
    /// Tells the model what the user did; then the widget shows `aspect` as the model has it, whatever came
    /// of it.
    template <class Act>
    void ByUser(Aspect aspect, Act act) {
        gate_.Pass([&] {
            act();
            if (gate_.IsOpen()) Refresh(aspect);
        });
    }
    void Click() {
        ByUser(Aspect::Checked, [this] { control_.UserClicks(); });
    }

 private:
    Control& control_;
    QWidget& widget_;
    EventGate& gate_;
};

/// Makes the widget of `control`, a child of `parent` that the latter owns, and shows the model in it. The
/// view must not outlive its widget.
std::unique_ptr<QtControlView> MakeControlView(Control& control, QWidget& parent, EventGate& gate);

/// UTF-8, as the model has it.
QString ToQt(std::string_view text);
std::string FromQt(const QString& text);
/// Twips as logical pixels.
int ToPixels(int twips);

}  // namespace quillmere
