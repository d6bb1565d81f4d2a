// focus_outline.h - draws a line around a widget while it has the focus, for widgets whose focus the style doesn't
// show.
#pragma once

#include <QWidget>

namespace platform::qt {

// Covers its parent, `target`, and is visible while `target` has the focus.
class FocusOutline final : public QWidget {
public:
    explicit FocusOutline(QWidget* target);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace platform::qt
