#pragma once

#include "platform/control.h"

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace quillmere {

/// The way from the widgets of one window to its model. Widgets signal a change whoever made it; the gate
/// lets only the user's through, and none once the window is gone from the model's side while its widgets
/// still wait to be deleted.
class UserGate {
 public:
    bool IsOpen() const { return open_; }
    /// `whenIdle` is run as soon as no act is under way any more, at once when none is.
    void Shut(std::function<void()> whenIdle) {
        open_ = false;
        whenIdle_ = std::move(whenIdle);
        if (acts_ == 0) whenIdle_();
    }

    /// Runs `act`, which goes through a door of the model, unless the program itself is changing a widget.
    template <class Act>
    void Pass(Act act) {
        if (!open_ || programChanges_ > 0) return;
        ++acts_;
        act();
        if (--acts_ == 0 && !open_) whenIdle_();
    }

    /// While one lives, the program is changing a widget.
    class ProgramChange {
     public:
        explicit ProgramChange(UserGate& gate) : gate_(gate) { ++gate_.programChanges_; }
        ~ProgramChange() { --gate_.programChanges_; }
        ProgramChange(const ProgramChange&) = delete;
        ProgramChange& operator=(const ProgramChange&) = delete;

     private:
        UserGate& gate_;
    };

 private:
    bool open_ = true;
    int acts_ = 0;  ///< under way; one may deliver events, and so start another
    int programChanges_ = 0;
    std::function<void()> whenIdle_;
};

/// One control's widget, which shows the model and reports the user through the gate.
class QtControlView : public ControlView {
 public:
    Control& Model() const { return control_; }
    QWidget& Widget() const { return widget_; }
    void Refresh(Aspect aspect) final;

 protected:
    QtControlView(Control& control, QWidget& widget, UserGate& gate);
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

 private:
    Control& control_;
    QWidget& widget_;
    UserGate& gate_;
};

/// Makes the widget of `control`, a child of `parent` that the latter owns, and shows the model in it. The
/// view must not outlive its widget.
std::unique_ptr<QtControlView> MakeControlView(Control& control, QWidget& parent, UserGate& gate);

/// UTF-8, as the model has it.
QString ToQt(std::string_view text);
std::string FromQt(const QString& text);
/// Twips as logical pixels.
int ToPixels(int twips);

}  // namespace quillmere
