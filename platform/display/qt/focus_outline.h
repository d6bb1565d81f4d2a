// focus_outline.h - a line around the widget that has the focus, for widgets whose style draws none.
#pragma once

#include <QWidget>

namespace platform::qt {

// Covers its parent, `target`, and is visible while that has the focus.
class FocusOutline final : public QWidget {
public:
    explicit FocusOutline(QWidget* target);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace platform::qt
