#include "dialog_units.h"

#include <QCheckBox>
#include <QFontMetricsF>
#include <QLineEdit>
#include <QPushButton>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace platform::qt {

namespace {

constexpr double VirtualBaseX = 6;
constexpr double VirtualBaseY = 13;

// Usual heights in template units.
constexpr double TextRow = 8;
constexpr double CheckRow = 10;
constexpr double EditRow = 12;
constexpr double ButtonRow = 11;

template <class Control>
double hintHeight(const QWidget& dialog)
{
    Control control;
    control.setFont(dialog.font());
    control.ensurePolished();
    return control.sizeHint().height();
}

}  // namespace

QRect DialogUnits::scaled(const RECT& rect) const
{
    // Rounds the corners and not the sizes, so that controls that touch in the template touch on the screen.
    const QPoint topLeft(static_cast<int>(std::lround(rect.left * x)), static_cast<int>(std::lround(rect.top * y)));
    const QPoint end(static_cast<int>(std::lround(rect.right * x)), static_cast<int>(std::lround(rect.bottom * y)));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

DialogUnits dialogUnitsOf(const QWidget& dialog)
{
    const QFontMetricsF metrics(dialog.font());
    const double letters =
        metrics.horizontalAdvance(QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"));
    const double unitY =
        std::max({metrics.height() * 8 / TextRow, hintHeight<QCheckBox>(dialog) * 8 / CheckRow,
                  hintHeight<QLineEdit>(dialog) * 8 / EditRow, hintHeight<QPushButton>(dialog) * 8 / ButtonRow});
    return {.x = letters / 52 / VirtualBaseX, .y = unitY / VirtualBaseY};
}

}  // namespace platform::qt
