// list_rows.h - the rows of a list box: sorted on the way in, found by their text.
//
// Rows lie in blocks of a few hundred, so that a hundred thousand insertions in any order cost no more than
// their comparisons. A row is found by halving: over the rows themselves where they are sorted, otherwise
// over an order by text that is made when it is first asked for. No letter's case counts.
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
    bool selected = false;
};

class ListRows {
public:
    explicit ListRows(bool sorted) : keepSorted_(sorted), inOrder_(sorted) {}

    [[nodiscard]] std::size_t size() const { return size_; }
    // `index` below size().
    [[nodiscard]] Row& row(std::size_t index);
    // In the order of the box.
    template <class Action>
    void forEach(Action action) const
    {
        for (const auto& block : blocks_)
            for (const auto& each : block)
                action(*each);
    }

    // At its sorted place, behind its equals, or at the end of an unsorted box. Gives the index.
    std::size_t add(std::u16string_view text);
    // `index` at most size(). The box may be out of order from here on.
    void insert(std::size_t index, std::u16string_view text);
    void erase(std::size_t index);
    void clear();

    // The first row behind `after` whose whole text is that, going round; nothing if there is none.
    [[nodiscard]] std::optional<std::size_t> find(std::u16string_view text, std::optional<std::size_t> after);

private:
    using Block = std::vector<std::unique_ptr<Row>>;

    struct Place {
        std::size_t block;
        std::size_t offset;
    };

    [[nodiscard]] Place placeOf(std::size_t index);
    [[nodiscard]] Place sortedPlace(std::u16string_view text) const;
    [[nodiscard]] std::size_t indexOf(Place place) const;
    void put(Place place, std::u16string_view text);
    void orderByText();
    void forgetOrders();

    std::vector<Block> blocks_;  // none is empty
    std::size_t size_ = 0;
    bool keepSorted_;
    bool inOrder_;
    // Made when they are needed, empty if the rows changed since.
    std::vector<std::size_t> starts_;  // index of each block's first row
    std::vector<std::size_t> byText_;  // the rows' indices in the order of their texts
};

}  // namespace platform::window
