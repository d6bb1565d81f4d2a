#include "row_delegate.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace platform::qt {

namespace {

bool hasAll(const QFontMetrics& metrics, const QString& text)
{
    return std::ranges::all_of(text, [&](QChar character) { return metrics.inFont(character); });
}

// The colour with which the style draws a row's text.
QColor textColor(const QStyleOptionViewItem& row)
{
    const QPalette::ColorGroup group = !(row.state & QStyle::State_Enabled) ? QPalette::Disabled
                                       : (row.state & QStyle::State_Active) ? QPalette::Active
                                                                            : QPalette::Inactive;
    return row.palette.color(group, (row.state & QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text);
}

}  // namespace

void RowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem row = option;
    initStyleOption(&row, index);
    if (hasAll(row.fontMetrics, row.text)) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    const QStyle* style = row.widget ? row.widget->style() : QApplication::style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &row, row.widget) + 1;
    const QRect text =
        style->subElementRect(QStyle::SE_ItemViewItemText, &row, row.widget).adjusted(margin, 0, -margin, 0);
    // The style draws the row without its text, and the code below draws the text. If the row's font lacks a character,
    // the style would take it from another font, and would centre the whole text by the height of that other font.
    const QString whole = std::exchange(row.text, QString());
    style->drawControl(QStyle::CE_ItemViewItem, &row, painter, row.widget);
    const int top = text.top() + (text.height() - row.fontMetrics.height()) / 2;
    painter->save();
    painter->setFont(row.font);
    painter->setPen(textColor(row));
    painter->setClipRect(text);
    const bool fromRight = row.direction == Qt::RightToLeft;
    const int x = fromRight ? text.right() - row.fontMetrics.horizontalAdvance(whole) : text.left();
    painter->drawText(QPoint(x, top + row.fontMetrics.ascent()), whole);
    painter->restore();
}

}  // namespace platform::qt
