// run_table.h - a table of the entries that the sets of a report have. An entry is an item of a set, a record, or a key
// or value of the registry. Each entry has one row for all sets. A row contains a run for each sequence of successive
// sets in which the entry has the same state. A run is the state, together with the first and the last set of the
// sequence. So 200 sets of the same files need little more space than one.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

namespace set_report {

// Identifies an entry. The same entry has the same key in every set. The key is a hash of 128 bits, so it is
// practically impossible that two different entries have the same key by chance.
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

    // Adds an entry to the current set. If a key is added twice in one set, the two calls add two different entries.
    //
    // head() returns the part of the row that is the same in all sets, as elements of a JSON array, such as
    // "1,\"\\a\"". `state` is the state of the entry in the current set. It consists of further elements of that array,
    // or is empty. States are equal if their texts are equal.
    template <class Head>
    void add(const RowKey& key, const Head& head, const std::string& state)
    {
        if (!isFull())
            addRun(rowOf(key, head), state);
    }

    // Once the rows have exceeded the limit of the constructor, older sets may lack rows. In that case returns the
    // number of the oldest set that is certainly complete. All newer sets are complete, too. If even the newest set may
    // lack rows, returns a number that is higher than that of any set. If the limit wasn't exceeded, returns 0.
    unsigned completeFrom() const { return completeFrom_; }

    // Writes a JSON array of all rows. Each row is an array [head, first set, last set, state, first set, last set,
    // state, ...]. A run of first set, last set and state describes successive sets in which the entry has this state.
    // The run with the newest sets comes first.
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
        std::uint64_t times;  // how many entries of that set had the key so far
    };

    bool isFull() const { return completeFrom_ != 0; }

    // Returns the row of the entry, and makes it if it doesn't exist. A set can have several entries with the same key.
    // These entries are numbered within the set, and entries of different sets share a row if their keys and their
    // numbers are equal.
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
