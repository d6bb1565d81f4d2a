// run_table.h - a table of things that many sets have, such as items. Each thing has a row, and successive
// sets with the same state of it share one element. So 200 sets of the same files need little more space than one.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

namespace set_report {

// Identifies a thing in all sets. It is a hash, and long enough that two things never have the same one by chance.
struct RowKey {
    bool operator==(const RowKey&) const = default;

    std::uint64_t first;
    std::uint64_t second;
};

struct RowKeyHash {
    std::size_t operator()(const RowKey& key) const noexcept { return key.first; }
};

class RunTable {
public:
    // The rows become at most about this long. What comes later is ignored.
    explicit RunTable(std::size_t mostBytes) : mostBytes_(mostBytes) {}

    // The next set. Their numbers are those of their dates, and the newest one comes first.
    void beginSet(unsigned set) { set_ = set; }

    // The set has the thing in this state. Things with the same key in one set are different things.
    //
    // head() returns what is the same in all sets, as elements of a JSON array: "1,\"\\a\"". `state` has elements of
    // that array too, or is empty. Equal texts are equal states.
    template <class Head>
    void add(const RowKey& key, const Head& head, const std::string& state)
    {
        if (!isFull())
            addRun(rowOf(key, head), state);
    }

    // The oldest set of which nothing was ignored.
    unsigned completeFrom() const { return completeFrom_; }

    // Writes an array of the rows: [head, first set, last set, state, first set, last set, state, ...]. A run of sets
    // has the same state. The newest one comes first.
    void write(std::ostream& out) const;

private:
    struct Run {
        unsigned first;
        unsigned last;
        std::string state;
    };
    struct Row {
        std::string head;
        std::vector<Run> runs;
        unsigned set;         // the last one that had its key
        std::uint64_t times;  // that this set had it so far
    };

    bool isFull() const { return completeFrom_ != 0; }

    // The second thing of the same key in one set has the row that the second one has in other sets.
    template <class Head>
    Row& rowOf(const RowKey& key, const Head& head)
    {
        const auto [found, isNew] = rows_.try_emplace(key, order_.size());
        if (isNew) {
            order_.push_back({head(), {}, set_, 1});
            bytes_ += order_.back().head.size();
            return order_.back();
        }
        Row& row = order_[found->second];
        row.times = row.set == set_ ? row.times + 1 : 1;
        row.set = set_;
        constexpr std::uint64_t OddNumber = 0x9E3779B97F4A7C15;  // so that neighbouring keys don't meet
        return row.times == 1 ? row : rowOf({key.first, key.second + (row.times - 1) * OddNumber}, head);
    }
    void addRun(Row& row, const std::string& state);

    std::size_t mostBytes_;
    std::size_t bytes_ = 0;
    unsigned set_ = 0;
    unsigned completeFrom_ = 0;
    std::unordered_map<RowKey, std::size_t, RowKeyHash> rows_;
    std::vector<Row> order_;
};

}  // namespace set_report
