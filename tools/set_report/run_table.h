// run_table.h - what many sets have of the same things, such as items: a row for each thing, with each of its states
// once. So 200 sets of the same files need little more space than one.
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
        if (isFull())
            return;
        const auto [found, isNew] = rows_.try_emplace(keyInSet(key), order_.size());
        if (isNew) {
            order_.push_back({head(), {}});
            bytes_ += order_.back().head.size();
        }
        addRun(order_[found->second], state);
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
    };
    struct KeyHash {
        std::size_t operator()(const RowKey& key) const noexcept { return key.first; }
    };
    struct Seen {
        unsigned set;
        std::uint64_t times;
    };

    bool isFull() const { return completeFrom_ != 0; }
    RowKey keyInSet(const RowKey& key);
    void addRun(Row& row, const std::string& state);

    std::size_t mostBytes_;
    std::size_t bytes_ = 0;
    unsigned set_ = 0;
    unsigned completeFrom_ = 0;
    std::unordered_map<RowKey, std::size_t, KeyHash> rows_;
    std::unordered_map<RowKey, Seen, KeyHash> seen_;  // of keys, in the last set that had them
    std::vector<Row> order_;
};

}  // namespace set_report
