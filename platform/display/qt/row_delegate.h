// row_delegate.h - draws the rows of lists and trees with their texts on the same line.
//
// A character that the font lacks, such as the picture of a line break, comes from another font. The toolkit would move
// the whole text of such a row up or down.
#pragma once

#include <QStyledItemDelegate>

namespace platform::qt {

class RowDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

}  // namespace platform::qt
