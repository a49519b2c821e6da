#pragma once

#include <functional>
#include <utility>

namespace quillmere {

/// The way from the widgets of one window to its model. Widgets signal a change whoever made it; the gate
/// lets only the user's through, and none once the window is gone from the model's side while its widgets
/// still wait to be deleted.
class EventGate {
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
        explicit ProgramChange(EventGate& gate) : gate_(gate) { ++gate_.programChanges_; }
        ~ProgramChange() { --gate_.programChanges_; }
        ProgramChange(const ProgramChange&) = delete;
        ProgramChange& operator=(const ProgramChange&) = delete;

     private:
        EventGate& gate_;
    };

 private:
    bool open_ = true;
    int acts_ = 0;  ///< under way; one may deliver events, and so start another
    int programChanges_ = 0;
    std::function<void()> whenIdle_;
};

}  // namespace quillmere
