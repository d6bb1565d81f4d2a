#include "history.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/record_changes.h"
#include "archive/registry_values.h"
#include "archive/set_date.h"
#include "change_lines.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "words.h"

#include "text/case_folding.h"
#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <iostream>

namespace quillbox_set {

using namespace archive;
using Json = nlohmann::ordered_json;
using screen_text::counted;
using screen_text::onScreen;

namespace {

// The state of the item in one set. Two states are equal if their texts are equal.
struct State {
    // Empty if the set doesn't have the item, or if the item lacks the registry value or the record that the user asks
    // for (HistoryOptions).
    std::string text;
    std::vector<RecordText> records;
    std::string fault;
};

// Computes the digest of an item that is read as a file.
class ItemDigest final : public ContentSink {
public:
    bool bytes(std::span<const std::byte> piece) override
    {
        hash_.add(piece);
        return true;
    }
    std::string finish() { return hexadecimal(hash_.finish()); }

private:
    Sha256 hash_;
};

State stateOfFile(const OpenFile& data, const Item& item)
{
    ItemDigest digest;
    const ContentReport content = readContent(data, item, digest);
    return {counted(content.bytes, "byte") + ", sha256 " + digest.finish(), {}, content.fault};
}

State stateOfRegistry(const OpenFile& data, const Item& item, const HistoryOptions& options)
{
    RegistryValues values;
    const ContentReport content = readContent(data, item, values);
    if (!options.value) {
        Item asFile = item;  // the digest is that of the registry's text
        asFile.entry.kind = ItemKindFile;
        State state = stateOfFile(data, asFile);
        state.text = counted(content.keys, "key") + ", " + counted(content.values, "value") + ", " + state.text;
        state.fault = content.fault;
        return state;
    }
    const std::u16string key = platform::text::fromUtf8(options.value->first);
    const std::u16string name = platform::text::fromUtf8(options.value->second);
    for (const auto& [place, value] : values.places) {
        if (place.isValue && platform::text::compareWithoutCase(place.key, key) == 0 &&
            platform::text::compareWithoutCase(place.name, name) == 0)
            return {value, {}, content.fault};
    }
    return {"", {}, content.fault};
}

// Returns a digest that is computed from the digests of a database's records. The order of the records has no effect.
std::string digestOf(std::vector<Digest> records)
{
    std::ranges::sort(records);
    Sha256 hash;
    hash.add(std::as_bytes(std::span(records)));
    return hexadecimal(hash.finish());
}

bool hasWords(Words& words, std::span<const CEPROPVAL> record)
{
    words.begin();
    for (const CEPROPVAL& property : record) {
        if (LOWORD(property.propid) == CEVT_LPWSTR)
            words.add(property.val.lpwstr);
    }
    return words.areAllFound();
}

State stateOfDatabase(const OpenFile& data, const Item& item, const HistoryOptions& options)
{
    Words words(options.record, true);
    RecordCollector records(
        [&](const Digest&, std::span<const CEPROPVAL> record) { return !words.isEmpty() && hasWords(words, record); });
    const ContentReport content = readContent(data, item, records);
    if (words.isEmpty())
        return {counted(records.digests.size(), "record") + ", sha256 " + digestOf(records.digests), {}, content.fault};
    std::vector<Digest> found;
    for (const RecordText& record : records.texts)
        found.push_back(record.digest);
    const std::string text = found.empty() ? "" : counted(found.size(), "record") + ", sha256 " + digestOf(found);
    return {text, std::move(records.texts), content.fault};
}

class History {
public:
    History(const HistoryOptions& options, std::size_t sets)
        : options_(options), name_(nameFromUser(options.item)), progress_(sets)
    {
    }

    void add(const SetFiles& files, const SetDate& date)
    {
        path_ = pathOf(files);
        date_ = &date;
        progress_.begin(path_);
        const OpenedSet set(files);
        if (!set.isOpen())
            return report(set.trouble());
        State state = stateIn(set);
        if (!state.fault.empty())
            return report(state.fault);  // the next set is compared with the state before the damage
        compare(state);
        last_ = std::move(state);
    }

    int exitCode() const { return failed_ || !found_ ? exitFaults : exitGood; }

private:
    State stateIn(const OpenedSet& set) const
    {
        const OpenFile data(set.mounted().dataPath, GENERIC_READ, OPEN_EXISTING);
        Item item;
        while (set.list().nextWith(name_, item)) {
            if (item.shownName() != name_)
                continue;
            if (!data.isOpen())
                return {"", {}, notOpened("the data file", data.error())};
            State state = item.isDatabase()   ? stateOfDatabase(data, item, options_)
                          : item.isRegistry() ? stateOfRegistry(data, item, options_)
                                              : stateOfFile(data, item);
            if (!state.fault.empty())
                state.fault = item.text() + ": " + state.fault;
            return state;
        }
        return {"", {}, set.list().missingItems()};
    }

    void compare(const State& state)
    {
        if (state.text == last_.text)
            return;
        found_ = true;
        const std::string event = last_.text.empty() ? "appeared" : state.text.empty() ? "vanished" : "changed";
        Json line = {{"event", event}, {"content", state.text}};
        std::string text = event + (state.text.empty() ? "" : "  " + onScreen(std::string_view(state.text)));
        Json records = Json::array();
        for (const RecordChange& change : changesOf(last_.records, state.records)) {
            records.push_back(
                {{"change", nameOf(change.change)}, {"record", change.title}, {"fields", jsonOf(change.fields)}});
            text += "\n    " + std::string(nameOf(change.change)) + "  " + onScreen(std::string_view(change.title)) +
                    linesOf(change.fields, "        ");
        }
        if (!records.empty())
            line["records"] = records;
        print(line, text);
    }

    void print(const Json& more, const std::string& text)
    {
        progress_.clear();
        Json line = {{"date", date_->text()}, {"doubt", nullptr}};
        if (!date_->doubt().empty())
            line["doubt"] = date_->doubt();
        line["set"] = jsonText(path_);
        line.update(more);
        printResult(options_.json, line, date_->textWithDoubt() + "  " + onScreen(path_) + "  " + text);
    }

    void report(const std::string& fault)
    {
        progress_.clear();
        failed_ = true;
        std::cerr << "quillbox-set: " << onScreen(path_) << ": " << fault << '\n';
    }

    const HistoryOptions& options_;
    std::u16string name_;
    Progress progress_;
    std::string path_;  // of the current set
    const SetDate* date_ = nullptr;
    State last_;
    bool found_ = false;
    bool failed_ = false;
};

}  // namespace

int showHistory(const FoundSets& found, const HistoryOptions& options)
{
    const int code = reportFaults(found);
    SetDates dates(found.sets);
    History history(options, found.sets.size());
    for (const std::size_t set : byDate(dates, found.sets.size()))
        history.add(found.sets[set], dates.of(set));
    return std::max(code, history.exitCode());
}

}  // namespace quillbox_set
