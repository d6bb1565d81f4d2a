#include "run_table.h"

#include "archive/long_work.h"

namespace set_report {

namespace {

constexpr std::size_t BytesOfRun = 16;  // the numbers of its sets, commas and brackets, roughly

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
