#include "reporting.h"

#include "archive/host_output.h"
#include "archive/long_work.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "set_report/report.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace quillbox_set {

using screen_text::counted;

namespace {

namespace fs = std::filesystem;

bool isFileOf(const archive::SetFiles& set, const fs::path& file)
{
    const auto isSame = [&](const std::string& name) {
        std::error_code error;
        return fs::equivalent(fs::path(set.folder) / name, file, error);
    };
    return isSame(set.listName) || isSame(set.dataName) || isSame(set.sumName);
}

}  // namespace

int writeReport(const archive::FoundSets& found, const std::string& output, bool force)
{
    const int code = reportFaults(found);
    if (found.sets.empty())
        return code;
    if (std::ranges::any_of(found.sets, [&](const auto& set) { return isFileOf(set, output); }))
        return reportTrouble("this is a file of a set: " + screen_text::onScreen(std::string_view(output)));
    archive::Output page(output, force);
    archive::Progress progress(found.sets.size());
    const set_report::ReportOutcome done = set_report::writeReport(found.sets, found.faults, page.stream(), progress);
    page.finish();
    const std::string damage =
        done.damagedSets == 0 ? "nothing damaged found" : std::to_string(done.damagedSets) + " damaged";
    const std::string shortened = done.isShortened ? "; the page is too large for all content of these sets" : "";
    if (!page.isPrinted())
        std::cout << screen_text::onScreen(std::string_view(output)) << ": " << counted(done.sets, "set") << ", "
                  << damage << shortened << ".\n";
    return std::max(code, done.damagedSets == 0 ? exitGood : exitFaults);
}

}  // namespace quillbox_set
