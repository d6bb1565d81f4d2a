#include "dialog_growth.h"

#include <algorithm>

namespace platform::qt {

namespace {

using Kind = GrowingControl::Kind;

// The shares in which list boxes and multi-line edits divide additional height. A list box gets more, because it
// usually has more rows than the text of an edit has lines.
constexpr int ListWeight = 3;
constexpr int LinesWeight = 1;

int weightOf(const GrowingControl& control)
{
    if (!control.visible)
        return 0;
    return control.kind == Kind::List ? ListWeight : control.kind == Kind::Lines ? LinesWeight : 0;
}

bool shareRows(const QRect& one, const QRect& other)
{
    return one.top() <= other.bottom() && other.top() <= one.bottom();
}

bool isRightOf(const QRect& rect, const QRect& other)
{
    return rect.left() > other.right() && shareRows(rect, other);
}

bool hasNeighbour(const GrowingControl& control, const std::vector<GrowingControl>& controls)
{
    return std::ranges::any_of(
        controls, [&](const GrowingControl& other) { return other.visible && isRightOf(other.rect, control.rect); });
}

// Changes `rect`, the rectangle of `control`, for a dialog that is wider by `extra`. If a growing control is in the
// same rows to the left of `control`, moves `rect` to the right. Otherwise widens `rect` if `control` itself grows, or
// if it is a label with nothing to its right.
void growSideways(const GrowingControl& control, const std::vector<GrowingControl>& controls, int extra, QRect& rect)
{
    const bool besideGrowing = std::ranges::any_of(controls, [&](const GrowingControl& other) {
        return weightOf(other) > 0 && isRightOf(control.rect, other.rect);
    });
    if (besideGrowing)
        rect.translate(extra, 0);
    else if (weightOf(control) > 0 || (control.kind == Kind::Text && !hasNeighbour(control, controls)))
        rect.setWidth(rect.width() + extra);
}

void growDown(const GrowingControl& control, const std::vector<GrowingControl>& controls, int extra, int allWeights,
              QRect& rect)
{
    int weightsAbove = 0;
    for (const GrowingControl& other : controls) {
        if (other.rect.bottom() < control.rect.top())
            weightsAbove += weightOf(other);
    }
    rect.translate(0, extra * weightsAbove / allWeights);
    rect.setHeight(rect.height() + extra * weightOf(control) / allWeights);
}

}  // namespace

bool canGrow(const std::vector<GrowingControl>& controls)
{
    return std::ranges::any_of(controls, [](const GrowingControl& each) { return weightOf(each) > 0; });
}

std::vector<QRect> grown(const std::vector<GrowingControl>& controls, QSize extra)
{
    int allWeights = 0;
    for (const GrowingControl& control : controls)
        allWeights += weightOf(control);
    std::vector<QRect> rects;
    for (const GrowingControl& control : controls) {
        QRect& rect = rects.emplace_back(control.rect);
        growSideways(control, controls, extra.width(), rect);
        if (allWeights > 0)
            growDown(control, controls, extra.height(), allWeights, rect);
    }
    return rects;
}

}  // namespace platform::qt
