#include "readable_palette.h"

#include <algorithm>
#include <cmath>

namespace platform::qt {

namespace {

// The contrast that WCAG 2.1 requires for texts, and for shapes that aren't texts.
constexpr double TextContrast = 4.5;
constexpr double ShapeContrast = 3;
constexpr double Step = 0.05;
// The colour of a drawn line, as a position between the colour of the background (0) and that of the text (1).
constexpr double LinePart = 0.42;

QColor between(const QColor& from, const QColor& to, double part)
{
    const auto mixed = [part](int a, int b) { return qRound(a + (b - a) * part); };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()), mixed(from.blue(), to.blue())};
}

double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

// Moves `color` towards `end` in small steps and returns the result. Stops when the result has a contrast of at least
// `wanted` with `other`, or when the result is nearly `end`.
QColor movedTo(const QColor& end, const QColor& color, const QColor& other, double wanted)
{
    QColor moved = color;
    for (double part = Step; part <= 1 && contrast(moved, other) < wanted; part += Step)
        moved = between(color, end, part);
    return moved;
}

}  // namespace

double contrast(const QColor& one, const QColor& other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

QColor lineColor(const QPalette& palette)
{
    return between(palette.color(QPalette::Window), palette.color(QPalette::WindowText), LinePart);
}

void makeReadable(QPalette& palette)
{
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        const QColor text = palette.color(group, QPalette::HighlightedText);
        const QColor away = contrast(text, Qt::black) > contrast(text, Qt::white) ? Qt::black : Qt::white;
        palette.setColor(group, QPalette::Highlight,
                         movedTo(away, palette.color(group, QPalette::Highlight), text, TextContrast));
    }
    constexpr std::pair<QPalette::ColorRole, QPalette::ColorRole> Texts[] = {{QPalette::WindowText, QPalette::Window},
                                                                             {QPalette::Text, QPalette::Base},
                                                                             {QPalette::ButtonText, QPalette::Button}};
    for (const auto& [text, surface] : Texts) {
        const QColor disabled = palette.color(QPalette::Disabled, text);
        palette.setColor(QPalette::Disabled, text,
                         movedTo(palette.color(QPalette::Active, text), disabled,
                                 palette.color(QPalette::Disabled, surface), ShapeContrast));
    }
}

}  // namespace platform::qt
