// focus_outline.h - a line around the widget that has the keyboard, for those whose style draws none.
#pragma once

#include <QWidget>

namespace platform::qt {

// Shows itself around `target`, its parent, while that has the focus.
// Inside of the rectangle, one pixel wide; whole on a screen with half pixels too, where a pen's line can vanish.
void drawOutline(QPainter& painter, const QRect& rect, const QColor& color);

class FocusOutline final : public QWidget {
public:
    explicit FocusOutline(QWidget* target);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace platform::qt
