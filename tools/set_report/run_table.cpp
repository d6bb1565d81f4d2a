#include "run_table.h"

#include "archive/long_work.h"

namespace set_report {

namespace {

constexpr std::size_t BytesOfRun = 16;  // the numbers of its sets, commas and brackets, roughly

}

// The second thing of the same key in one set has the row that the second one has in other sets.
RowKey RunTable::keyInSet(const RowKey& key)
{
    Seen& seen = seen_.try_emplace(key, Seen{set_, 0}).first->second;
    seen.times = seen.set == set_ ? seen.times + 1 : 1;
    seen.set = set_;
    constexpr std::uint64_t OddNumber = 0x9E3779B97F4A7C15;  // so that neighbouring keys don't meet
    return {key.first, key.second + (seen.times - 1) * OddNumber};
}

void RunTable::addRun(Row& row, const std::string& state)
{
    if (!row.runs.empty() && row.runs.back().first == set_ + 1 && row.runs.back().state == state) {
        row.runs.back().first = set_;
        return;
    }
    row.runs.push_back({set_, set_, state});
    bytes_ += state.size() + BytesOfRun;
    if (bytes_ > mostBytes_)
        completeFrom_ = set_ + 1;
}

void RunTable::write(std::ostream& out) const
{
    out << '[';
    const char* separator = "";
    for (const Row& row : order_) {
        archive::checkStop();
        out << separator << "\n[" << row.head;
        for (const Run& run : row.runs)
            out << ',' << run.first << ',' << run.last << (run.state.empty() ? "" : ",") << run.state;
        out << ']';
        separator = ",";
    }
    out << ']';
}

}  // namespace set_report
