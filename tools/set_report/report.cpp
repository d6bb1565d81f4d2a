#include "set_report/report.h"

#include "archive/opened_set.h"
#include "archive/set_search.h"
#include "json_text.h"
#include "page_parts.h"
#include "screen_text/screen_text.h"
#include "set_tables.h"

#include <algorithm>
#include <ctime>
#include <ranges>

namespace set_report {

using namespace archive;
using Json = nlohmann::ordered_json;
using screen_text::onScreen;

namespace {

std::string localTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    char text[32] = "";
    if (::localtime_r(&now, &local) != nullptr)
        (void)std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local);
    return text;
}

class Report {
public:
    explicit Report(std::size_t sets) : sets_(sets) {}

    // Adds a set to the report. The newest set must be added first.
    void add(std::size_t number, const SetFiles& files, const SetDate& date, Progress& progress)
    {
        tables_.beginSet(static_cast<unsigned>(number));
        Json& shown = sets_[number];
        shown = {{"date", date.text()}, {"doubt", date.doubt()}, {"path", onScreen(pathOf(files))}};
        const OpenedSet set(files);
        if (set.isOpen())
            shown.update(SetReading(tables_, progress).read(set));
        else
            shown.update(unreadSet(set.trouble()));
    }

    ReportOutcome outcome() const
    {
        const auto isDamaged = [](const Json& set) { return set["damaged"] != 0 || !set["faults"].empty(); };
        return {sets_.size(), static_cast<std::size_t>(std::ranges::count_if(sets_, isDamaged)),
                tables_.items.completeFrom() + tables_.records.completeFrom() + tables_.values.completeFrom() != 0};
    }

    void write(const std::vector<std::string>& faults, std::ostream& out) const
    {
        out.write(setReportHead, setReportHeadEnd - setReportHead);
        out << "{\"version\":" << jsonString(QUILLBOX_VERSION) << ",\"written\":" << jsonString(localTime())
            << ",\"faults\":" << jsonText(faults) << ",\n\"itemsFrom\":" << tables_.items.completeFrom()
            << ",\"recordsFrom\":" << tables_.records.completeFrom()
            << ",\"valuesFrom\":" << tables_.values.completeFrom() << ",\n\"sets\":" << jsonText(sets_);
        out << ",\n\"databases\":";
        tables_.databases.write(out);
        out << ",\n\"properties\":";
        tables_.properties.write(out);
        out << ",\n\"items\":";
        tables_.items.write(out);
        out << ",\n\"records\":";
        tables_.records.write(out);
        out << ",\n\"values\":";
        tables_.values.write(out);
        out << '}';
        out.write(setReportTail, setReportTailEnd - setReportTail);
    }

private:
    static Json unreadSet(const std::string& trouble)
    {
        return {{"comment", ""},
                {"items", 0},
                {"bytes", 0},
                {"packed", 0},
                {"sealed", false},
                {"damaged", 0},
                {"faults", Json::array({trouble})},
                {"warnings", Json::array()},
                {"warningCount", 0}};
    }

    std::vector<Json> sets_;  // the oldest first
    ReportTables tables_;
};

}  // namespace

ReportOutcome writeReport(const std::vector<SetFiles>& sets, const std::vector<std::string>& faults, std::ostream& out,
                          Progress& progress)
{
    SetDates dates(sets);
    const std::vector<std::size_t> order = byDate(dates, sets.size());
    Report report(sets.size());
    for (std::size_t number = sets.size(); number-- > 0;) {
        const SetFiles& files = sets[order[number]];
        progress.begin(pathOf(files));
        report.add(number, files, dates.of(order[number]), progress);
    }
    progress.clear();
    report.write(faults, out);
    return report.outcome();
}

}  // namespace set_report
