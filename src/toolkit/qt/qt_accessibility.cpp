#include "toolkit/qt/qt_accessibility.h"

#include "toolkit/qt/qt_widgets.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <functional>
#include <utility>

namespace quillmere {

namespace {

/// A widget of the given role that can be pressed.
class PressableAccess : public QAccessibleWidget {
 public:
    PressableAccess(QWidget& widget, QAccessible::Role role, std::function<void()> press)
        : QAccessibleWidget(&widget, role), press_(std::move(press)) {}

    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (widget()->isEnabled()) names.prepend(pressAction());
        return names;
    }
    void doAction(const QString& name) override {
        if (name == pressAction() && widget()->isEnabled()) return press_();
        QAccessibleWidget::doAction(name);
    }

 private:
    std::function<void()> press_;
};

class OptionAccess : public PressableAccess {
 public:
    explicit OptionAccess(OptionWidget& option)
        : PressableAccess(option, QAccessible::RadioButton, [&option] { option.click(); }), option_(option) {}

    QAccessible::State state() const override {
        QAccessible::State state = PressableAccess::state();
        state.checkable = true;
        state.checked = option_.isChecked();
        return state;
    }

 private:
    OptionWidget& option_;
};

QAccessibleInterface* MakeAccess(const QString& /*className*/, QObject* object) {
    if (auto* const option = dynamic_cast<OptionWidget*>(object)) return new OptionAccess(*option);
    if (auto* const link = dynamic_cast<LinkWidget*>(object)) {
        return new PressableAccess(*link, QAccessible::Link, [link] { link->OnClick(); });
    }
    return nullptr;
}

}  // namespace

void InstallAccessibility() {
    QAccessible::installFactory(MakeAccess);
}

}  // namespace quillmere
