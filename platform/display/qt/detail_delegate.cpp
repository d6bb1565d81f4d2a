#include "detail_delegate.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPalette>

#include <algorithm>

namespace platform::qt {

namespace {

constexpr int Gap = 3;               // in average letters
constexpr double PartOfText = 0.72;  // the colour of details, between that of the background (0) and that of texts (1)

QColor detailColor(const QStyleOptionViewItem& option)
{
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QColor text = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    const QColor back = option.palette.color(selected ? QPalette::Highlight : QPalette::Base);
    const auto mixed = [](int from, int to) { return qRound(from + (to - from) * PartOfText); };
    return selected ? text
                    : QColor(mixed(back.red(), text.red()), mixed(back.green(), text.green()),
                             mixed(back.blue(), text.blue()));
}

}  // namespace

int DetailDelegate::columnFor(int widestText, const QFontMetrics& metrics)
{
    return widestText + Gap * metrics.averageCharWidth();
}

QSize DetailDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize size = RowDelegate::sizeHint(option, index);
    const QString detail = column_ > 0 ? index.data(DetailRole).toString() : QString();
    if (!detail.isEmpty())
        size.setWidth(column_ + option.fontMetrics.horizontalAdvance(detail) +
                      Gap * option.fontMetrics.averageCharWidth());
    return size;
}

void DetailDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    RowDelegate::paint(painter, option, index);
    const QString detail = column_ > 0 ? index.data(DetailRole).toString() : QString();
    if (detail.isEmpty())
        return;
    QRect rect = option.rect;
    rect.setLeft(rect.left() + column_);
    painter->save();
    painter->setPen(detailColor(option));
    painter->drawText(QStyle::visualRect(option.direction, option.rect, rect),
                      static_cast<int>(QStyle::visualAlignment(option.direction, Qt::AlignLeft) | Qt::AlignVCenter),
                      detail);
    painter->restore();
}

}  // namespace platform::qt
