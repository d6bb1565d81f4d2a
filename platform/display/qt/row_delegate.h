// row_delegate.h - draws the rows of lists and trees with their texts at the same height in each row.
//
// The toolkit draws a character that the font lacks, such as the symbol for a line break, in another font. Without this
// class, the whole text of such a row would be higher or lower than in other rows.
#pragma once

#include <QStyledItemDelegate>

namespace platform::qt {

class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

}  // namespace platform::qt
