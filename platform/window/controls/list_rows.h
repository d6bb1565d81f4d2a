// list_rows.h - the rows of a list box. In a sorted box, add() keeps the rows in the order of their texts. Sorting and
// searching ignore case.
//
// Rows are stored in blocks of a few hundred, so an insertion in the middle of 100,000 rows moves few of them. find()
// uses a binary search in the rows if they are sorted, and otherwise in an index by text, which it makes on demand.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::window {

struct Row {
    std::u16string text;
    std::u16string detail;  // for display only
    bool selected = false;
};

class ListRows {
public:
    explicit ListRows(bool sorted) : keepSorted_(sorted), inOrder_(sorted) {}

    std::size_t size() const { return size_; }
    // `index` must be below size().
    Row& row(std::size_t index);
    // Calls `action` for each row, in the order of the box.
    template <class Action>
    void forEach(Action action) const
    {
        for (const auto& block : blocks_)
            for (const auto& each : block)
                action(*each);
    }

    // Adds the row at its position in the order, after rows with equal text. In an unsorted box adds the row at the
    // end. Returns the index.
    std::size_t add(std::u16string_view text);
    // Inserts the row at `index`, which must be at most size(). After that the rows of a sorted box can be out of
    // order. So until clear(), find() treats the rows as unsorted, and add() can put a row at any position.
    void insert(std::size_t index, std::u16string_view text);
    void erase(std::size_t index);
    void clear();

    // Returns the index of the first row after `after` whose whole text equals `text`. After the last row the search
    // continues with the first. Without `after` the search begins with the first row. Returns nothing if there is no
    // such row.
    std::optional<std::size_t> find(std::u16string_view text, std::optional<std::size_t> after);

private:
    using Block = std::vector<std::unique_ptr<Row>>;

    struct Position {
        std::size_t block;
        std::size_t offset;
    };

    Position positionOf(std::size_t index);
    Position sortedPosition(std::u16string_view text) const;
    std::size_t indexOf(Position position) const;
    void put(Position position, std::u16string_view text);
    void orderByText();
    void forgetOrders();

    std::vector<Block> blocks_;  // no block is empty
    std::size_t size_ = 0;
    bool keepSorted_;
    bool inOrder_;
    // Both vectors are made on demand. They are empty if the rows have changed since then.
    std::vector<std::size_t> starts_;  // index of each block's first row
    std::vector<std::size_t> byText_;  // the rows' indices in the order of their texts
};

}  // namespace platform::window
