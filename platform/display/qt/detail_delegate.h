// detail_delegate.h - draws the details of a list box's rows in a column of their own, beside the texts.
#pragma once

#include "row_delegate.h"

namespace platform::qt {

// The role under which a model gives the detail of a row.
inline constexpr int DetailRole = Qt::UserRole;

class DetailDelegate final : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    // The distance of the column from the beginning of the texts, in pixels. 0: no row has a detail.
    void setColumn(int column) { column_ = column; }
    // The distance for texts that are at most so wide.
    static int columnFor(int widestText, const QFontMetrics& metrics);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    int column_ = 0;
};

}  // namespace platform::qt
