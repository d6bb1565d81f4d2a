// detail_delegate.h - draws the details of a list box's rows in a column of their own, beside the texts.
#pragma once

#include "row_delegate.h"

namespace platform::qt {

// The role with which a model returns the detail of a row.
inline constexpr int DetailRole = Qt::UserRole;

class DetailDelegate final : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    // Sets the distance of the column from the beginning of the texts, in pixels. 0 means that no row has a detail.
    void setColumn(int column) { column_ = column; }
    // Returns the distance for a list in which the widest text is `widestText` pixels wide.
    static int columnFor(int widestText, const QFontMetrics& metrics);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    int column_ = 0;
};

}  // namespace platform::qt
