#include "verification.h"

#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/set_check.h"
#include "exit_code.h"
#include "json_list.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace quillbox_set {

using namespace archive;
using screen_text::counted;
using screen_text::onScreen;

namespace {

using Json = nlohmann::ordered_json;

std::string asText(const Item* item)
{
    return item ? "item " + std::to_string(item->number) + ", " + item->text() + ": " : "";
}

Json asJson(const Item* item, const std::string& reason, bool isWarning)
{
    Json fault = Json::object();
    if (item)
        fault = {
            {"item", item->number}, {"kind", item->kindText()}, {"name", platform::text::toUtf8(item->shownName())}};
    fault["reason"] = reason;
    if (isWarning)
        fault["warning"] = true;
    return fault;
}

// Returns a text such as "Sound: 3 items, 1 warning, not sealed."
std::string summary(const SetState& state)
{
    std::string text = state.isSound() ? "Sound: " : "Unsound: " + counted(state.faults, "fault") + " in ";
    text += counted(state.items, "item");
    if (state.warnings != 0)
        text += ", " + counted(state.warnings, "warning");
    return text + (state.isSealed ? ", sealed." : ", not sealed.");
}

// Prints the faults of a single set, as lines or as the elements of a JSON array.
class OneReport final : public CheckSink {
public:
    OneReport(Progress& progress, bool json, std::uint64_t dataBytes) : progress_(progress), dataBytes_(dataBytes)
    {
        if (json)
            list_.emplace(Json::object(), "faults");
    }

    void fault(const Item* item, const std::string& reason) override { print(item, reason, false); }
    void warning(const Item* item, const std::string& reason) override { print(item, reason, true); }
    void begin(const Item& item) override { progress_.at(item.entry.startOffset, dataBytes_); }

    void finish(const SetState& state)
    {
        progress_.clear();
        if (list_)
            list_->end({{"warnings", state.warnings},
                        {"itemCount", state.items},
                        {"sealed", state.isSealed},
                        {"sound", state.isSound()}});
        else
            std::cout << summary(state) << '\n';
    }

private:
    void print(const Item* item, const std::string& reason, bool isWarning)
    {
        progress_.clear();
        if (list_)
            list_->add(asJson(item, reason, isWarning));
        else
            std::cout << asText(item) << (isWarning ? "warning: " : "") << reason << '\n';
    }

    Progress& progress_;
    std::uint64_t dataBytes_;
    std::optional<JsonList> list_;
};

// Prints the faults of one of several sets, each fault with the path of the set.
class LineReport final : public CheckSink {
public:
    LineReport(Progress& progress, const std::string& path, bool json) : progress_(progress), path_(path), json_(json)
    {
    }

    void fault(const Item* item, const std::string& reason) override { print(item, reason, false); }
    void warning(const Item* item, const std::string& reason) override { print(item, reason, true); }
    void begin(const Item& item) override { progress_.at(item.number, 0); }

    void finish(const SetState& state)
    {
        printLine({{"itemCount", state.items},
                   {"faults", state.faults},
                   {"warnings", state.warnings},
                   {"sealed", state.isSealed},
                   {"sound", state.isSound()}},
                  summary(state));
    }

private:
    void print(const Item* item, const std::string& reason, bool isWarning)
    {
        printLine(asJson(item, reason, isWarning), asText(item) + (isWarning ? "warning: " : "") + reason);
    }

    void printLine(const Json& fields, const std::string& text)
    {
        progress_.clear();
        Json line = {{"set", jsonText(path_)}};
        line.update(fields);
        printResult(json_, line, onScreen(path_) + ": " + text);
    }

    Progress& progress_;
    std::string path_;
    bool json_;
};

// Returns whether the set has no faults.
template <class Report>
bool check(const OpenedSet& set, Report& report)
{
    const SetState state = checkSet(set, report);
    report.finish(state);
    return state.isSound();
}

std::uint64_t sizeOf(const std::u16string& path)
{
    const OpenFile file(path, GENERIC_READ, OPEN_EXISTING);
    return file.isOpen() ? file.size() : 0;
}

}  // namespace

int verifySet(const SetFiles& files, bool json)
{
    Progress progress(1);
    const OpenedSet set(files);
    if (!set.isOpen())
        return reportTrouble(set.trouble());
    progress.begin(files.listName);
    OneReport report(progress, json, sizeOf(set.mounted().dataPath));
    return check(set, report) ? exitGood : exitFaults;
}

int verifySets(const FoundSets& found, bool json)
{
    int code = reportFaults(found);
    Progress progress(found.sets.size());
    for (const SetFiles& files : found.sets) {
        const std::string path = pathOf(files);
        progress.begin(path);
        const OpenedSet set(files);
        LineReport report(progress, path, json);
        if (!set.isOpen())
            report.fault(nullptr, set.trouble());
        if (!set.isOpen() || !check(set, report))
            code = std::max(code, exitFaults);
    }
    return code;
}

}  // namespace quillbox_set
