// run_table.h - a table of things that many sets have, such as items. Each thing has a row. Successive sets in which
// the thing has the same state share one element of the row. So 200 sets of the same files need little more space than
// one.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

namespace set_report {

// Identifies a thing in all sets. It is a hash of 128 bits, so it is practically impossible that two things have the
// same key by chance.
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
    // Once all rows together have more than this many bytes, everything that is added later is ignored.
    explicit RunTable(std::size_t mostBytes) : mostBytes_(mostBytes) {}

    // Begins the next set. The oldest set has the lowest number. Begin the newest set first, then the others in
    // descending order of their numbers.
    void beginSet(unsigned set) { set_ = set; }

    // Adds a thing of the current set in this state. If a key is added twice in one set, the two calls add two
    // different things.
    //
    // head() returns the part of the row that is the same in all sets, as elements of a JSON array, such as
    // "1,\"\\a\"". `state` consists of further elements of that array, or is empty. States are equal if their texts are
    // equal.
    template <class Head>
    void add(const RowKey& key, const Head& head, const std::string& state)
    {
        if (!isFull())
            addRun(rowOf(key, head), state);
    }

    // Returns a number. The rows are complete for all sets with this number or a higher one. The number is 0 as long as
    // the rows haven't exceeded the limit. If even the newest set may lack rows, no set has the number.
    unsigned completeFrom() const { return completeFrom_; }

    // Writes an array of the rows: [head, first set, last set, state, first set, last set, state, ...]. Each group of
    // first set, last set and state describes successive sets in which the thing has this state. The group with the
    // newest sets comes first.
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
        unsigned set;         // the set in which the row's key was added last
        std::uint64_t times;  // how many things of that set had the key so far
    };

    bool isFull() const { return completeFrom_ != 0; }

    // Returns the row of the thing, and makes it if it doesn't exist. A set can have several things with the same key.
    // The second thing with a key has the same row as the second thing with this key in another set.
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
        constexpr std::uint64_t OddNumber = 0x9E3779B97F4A7C15;  // keeps the keys derived from neighbouring keys apart
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
