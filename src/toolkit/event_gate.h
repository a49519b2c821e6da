#pragma once

#include <functional>
#include <utility>

namespace quillmere {

/// Separates events from changes that the program makes: the widgets of a window signal both alike. Events
/// are passed on to the window and its controls. When the window is closed nothing is any more, although its
/// widgets may send signals until they are deleted.
class EventGate {
 public:
    bool IsOpen() const { return open_; }
    /// Passes nothing on from now on. `whenIdle` is called when no event is being handled any more, at once
    /// when none is.
    void Shut(std::function<void()> whenIdle) {
        open_ = false;
        whenIdle_ = std::move(whenIdle);
        if (handling_ == 0) whenIdle_();
    }

    /// Calls `event`, which reports an event to a control or window, unless the program is changing a widget.
    template <class Event>
    void Pass(Event event) {
        if (!open_ || programChanges_ > 0) return;
        ++handling_;
        event();
        if (--handling_ == 0 && !open_) whenIdle_();
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
    int handling_ = 0;  ///< events being handled; handling one may deliver others
    int programChanges_ = 0;
    std::function<void()> whenIdle_;
};

}  // namespace quillmere
