#include "list_rows.h"

#include "text/case_folding.h"

#include <algorithm>
#include <numeric>

namespace platform::window {

namespace {

constexpr std::size_t MostRowsInBlock = 512;

bool isBefore(std::u16string_view left, std::u16string_view right)
{
    return platform::text::compareWithoutCase(left, right) < 0;
}

}  // namespace

Row& ListRows::row(std::size_t index)
{
    const Position position = positionOf(index);
    return *blocks_[position.block][position.offset];
}

ListRows::Position ListRows::positionOf(std::size_t index)
{
    if (starts_.empty()) {
        std::size_t start = 0;
        for (const Block& block : blocks_) {
            starts_.push_back(start);
            start += block.size();
        }
    }
    const auto block = std::prev(std::ranges::upper_bound(starts_, index));
    return {static_cast<std::size_t>(block - starts_.begin()), index - *block};
}

void ListRows::forgetOrders()
{
    starts_.clear();
    byText_.clear();
}

std::size_t ListRows::indexOf(Position position) const
{
    std::size_t index = position.offset;
    for (std::size_t block = 0; block < position.block; ++block)
        index += blocks_[block].size();
    return index;
}

ListRows::Position ListRows::sortedPosition(std::u16string_view text) const
{
    const auto block =
        std::upper_bound(blocks_.begin(), blocks_.end(), text,
                         [](std::u16string_view wanted, const Block& at) { return isBefore(wanted, at.back()->text); });
    if (block == blocks_.end())
        return blocks_.empty() ? Position{0, 0} : Position{blocks_.size() - 1, blocks_.back().size()};
    const auto row = std::upper_bound(
        block->begin(), block->end(), text,
        [](std::u16string_view wanted, const std::unique_ptr<Row>& at) { return isBefore(wanted, at->text); });
    return {static_cast<std::size_t>(block - blocks_.begin()), static_cast<std::size_t>(row - block->begin())};
}

std::size_t ListRows::add(std::u16string_view text)
{
    const Position end = blocks_.empty() ? Position{0, 0} : Position{blocks_.size() - 1, blocks_.back().size()};
    const Position position = keepSorted_ ? sortedPosition(text) : end;
    const std::size_t index = indexOf(position);
    put(position, text);
    return index;
}

void ListRows::insert(std::size_t index, std::u16string_view text)
{
    inOrder_ = false;
    if (index < size_)
        put(positionOf(index), text);
    else
        put(blocks_.empty() ? Position{0, 0} : Position{blocks_.size() - 1, blocks_.back().size()}, text);
}

void ListRows::put(Position position, std::u16string_view text)
{
    forgetOrders();
    if (blocks_.empty())
        blocks_.emplace_back();
    Block& block = blocks_[position.block];
    auto row = std::make_unique<Row>();
    row->text = text;
    block.insert(block.begin() + static_cast<std::ptrdiff_t>(position.offset), std::move(row));
    ++size_;
    if (block.size() < MostRowsInBlock)
        return;
    const auto middle = block.begin() + MostRowsInBlock / 2;
    Block upper(std::make_move_iterator(middle), std::make_move_iterator(block.end()));
    block.erase(middle, block.end());
    blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(position.block) + 1, std::move(upper));
}

void ListRows::erase(std::size_t index)
{
    const Position position = positionOf(index);
    forgetOrders();
    Block& block = blocks_[position.block];
    block.erase(block.begin() + static_cast<std::ptrdiff_t>(position.offset));
    if (block.empty())
        blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(position.block));
    --size_;
}

void ListRows::clear()
{
    blocks_.clear();
    forgetOrders();
    size_ = 0;
    inOrder_ = keepSorted_;
}

void ListRows::orderByText()
{
    if (inOrder_ || byText_.size() == size_)
        return;
    std::vector<const Row*> rows;
    rows.reserve(size_);
    forEach([&rows](const Row& each) { rows.push_back(&each); });
    byText_.resize(size_);
    std::iota(byText_.begin(), byText_.end(), std::size_t{0});
    std::ranges::stable_sort(byText_, [&rows](std::size_t left, std::size_t right) {
        return isBefore(rows[left]->text, rows[right]->text);
    });
}

std::optional<std::size_t> ListRows::find(std::u16string_view text, std::optional<std::size_t> after)
{
    orderByText();
    const auto indexAt = [this](std::size_t position) { return inOrder_ ? position : byText_[position]; };
    // `position` is a row's number in the order of the texts. Rows with equal texts are in the order of their indices.
    const auto partition = [&](auto isBeforeTarget) {
        std::size_t low = 0;
        std::size_t high = size_;
        while (low < high) {
            const std::size_t middle = (low + high) / 2;
            if (isBeforeTarget(indexAt(middle)))
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    };
    const std::size_t first = partition([&](std::size_t index) { return isBefore(row(index).text, text); });
    if (first == size_ || platform::text::compareWithoutCase(row(indexAt(first)).text, text) != 0)
        return std::nullopt;
    if (!after || indexAt(first) > *after)
        return indexAt(first);
    const std::size_t next = partition([&](std::size_t index) {
        const int order = platform::text::compareWithoutCase(row(index).text, text);
        return order < 0 || (order == 0 && index <= *after);
    });
    if (next < size_ && platform::text::compareWithoutCase(row(indexAt(next)).text, text) == 0)
        return indexAt(next);
    return indexAt(first);  // continues with the first row
}

}  // namespace platform::window
