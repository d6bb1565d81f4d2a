// focus_outline.h - a line around the widget that has the keyboard, for those whose style draws none.
#pragma once

#include <QWidget>

namespace platform::qt {

// Shows itself around `target`, its parent, while that has the focus.
class FocusOutline final : public QWidget {
public:
    explicit FocusOutline(QWidget* target);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace platform::qt
