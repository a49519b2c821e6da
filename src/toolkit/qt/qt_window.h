#pragma once

#include "toolkit/qt/qt_controls.h"
#include "toolkit/window.h"

#include <QWidget>
#include <map>
#include <memory>

class QAction;
class QEventLoop;
class QMenu;
class QMenuBar;
class QTimer;

namespace quillmere {

/// The Qt window that shows `model`, with its widgets, menus and running timers. Sets the views of the
/// controls; that of the window itself is set by the backend.
class QtWindow final : public QWidget, public WindowView {
 public:
    /// Hidden. `model` is not used after LetGo, nor by the destructor.
    explicit QtWindow(Window& model);
    ~QtWindow() override;

    Window& Model() const { return model_; }
    QMenuBar* MenuBar() const { return menuBar_; }
    QAction& ActionOf(const MenuItem& item) const { return *actions_.at(&item); }
    QWidget& WidgetOf(const Control& control) const { return views_.at(&control)->Widget(); }

    /// Delivers events until LetGo.
    void RunUntilGone();
    /// Hides the window, clears the views of the controls, and deletes the object as soon as no event of it
    /// is being handled.
    void LetGo();

    void RefreshCaption() override;
    void RefreshCheckMark(const MenuItem& item) override;

 protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

 private:
    void MakeControls(QWidget& client);
    void MakeMenus();
    QMenu* MakeMenu(Menu& menu);
    void StartTimers();
    bool ServesKey(QEvent& event);
    bool ServesAccessKey(QEvent& event);
    bool ServesEscape(QEvent& event);
    bool ServesMenuKey(QEvent& event);
    void PressAccessKey(char key);
    void NoteDeactivation();
    void ReportDeactivation();

    Window& model_;
    EventGate gate_;
    std::map<const Control*, std::unique_ptr<QtControlView>> views_;
    std::map<const MenuItem*, QAction*> actions_;
    QMenuBar* menuBar_ = nullptr;  ///< null for a window without menus
    QTimer* deactivation_;         ///< of 0 ms, started by a loss of the activation
    QEventLoop* untilGone_ = nullptr;
};

}  // namespace quillmere
