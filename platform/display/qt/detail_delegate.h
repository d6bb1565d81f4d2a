// detail_delegate.h - draws the rows of a list box with their details in a second column, beside the texts.
#pragma once

#include "row_delegate.h"

namespace platform::qt {

// The role with which a model returns the detail of a row.
inline constexpr int DetailRole = Qt::UserRole;

class DetailDelegate final : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    // Sets the distance in pixels from the beginning of the rows' texts to the column of details. 0 means that no row
    // has a detail.
    void setColumn(int column) { column_ = column; }
    // Returns the distance for setColumn(). `widestText` is the width in pixels of the widest text in the list.
    static int columnFor(int widestText, const QFontMetrics& metrics);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    int column_ = 0;
};

}  // namespace platform::qt
