#include "finding.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/set_date.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"
#include "text_search.h"

#include "text/host_name.h"
#include "text/wildcard.h"

#include "ce/file.h"

#include <algorithm>
#include <iostream>
#include <optional>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

// Returns the longest part of the pattern that contains no wildcard.
std::u16string longestPlainPart(std::u16string_view pattern)
{
    std::u16string_view longest;
    while (!pattern.empty()) {
        const std::u16string_view part = pattern.substr(0, pattern.find_first_of(u"*?"));
        longest = part.size() > longest.size() ? part : longest;
        pattern.remove_prefix(std::min(part.size() + 1, pattern.size()));
    }
    return std::u16string(longest);
}

class Finding {
public:
    Finding(const FindOptions& options, const std::vector<SetFiles>& sets)
        : options_(options), sets_(sets), dates_(sets), pattern_(nameFromUser(options.pattern)),
          rule_(options.ignoreCase ? platform::text::Case::Ignored : platform::text::Case::Counts),
          part_(options.ignoreCase ? u"" : longestPlainPart(pattern_)),
          isPath_(pattern_.find(u'\\') != std::u16string::npos), words_(options.text, options.ignoreCase),
          progress_(sets.size())
    {
    }

    void searchSet(std::size_t number)
    {
        number_ = number;
        path_ = pathOf(sets_[number]);
        progress_.begin(path_);
        const OpenedSet set(sets_[number]);
        if (!set.isOpen())
            return report(set.trouble());
        std::optional<OpenFile> data;
        if (!words_.isEmpty() && !data.emplace(set.mounted().dataPath, GENERIC_READ, OPEN_EXISTING).isOpen())
            report(notOpened("the data file", data->error()));
        Item item;
        while (set.list().nextWith(part_, item)) {
            if (!matches(item))
                continue;
            if (!data)
                print(item, "", nullptr);
            else if (data->isOpen())
                searchItem(*data, item);
        }
        if (const std::string fault = set.list().missingItems(); !fault.empty())
            report(fault);
    }

    int exitCode() const { return failed_ || !found_ ? exitFaults : exitGood; }

private:
    bool matches(const Item& item) const
    {
        const std::u16string_view name = item.shownName();
        if (platform::text::matchesWildcards(name, pattern_, rule_))
            return true;
        const std::size_t separator = name.rfind(u'\\');
        return !isPath_ && separator != std::u16string_view::npos &&
               platform::text::matchesWildcards(name.substr(separator + 1), pattern_, rule_);
    }

    void searchItem(const OpenFile& data, const Item& item)
    {
        progress_.at(item.number, 0);
        TextSearch search(words_, [&](const std::string& text, const nlohmann::ordered_json& inside) {
            print(item, ", " + text, inside);
        });
        const ContentReport content = readContent(data, item, search);
        search.finish();
        if (!content.fault.empty())
            report(item.text() + ": " + content.fault);
    }

    void print(const Item& item, const std::string& where, const nlohmann::ordered_json& inside)
    {
        progress_.clear();
        found_ = true;
        const SetDate& date = dates_.of(number_);  // the date is read only for sets with a match
        if (!options_.json)
            return printResult(false, nullptr,
                               onScreen(path_) + "  " + date.textWithDoubt() + "  " + item.text() + where);
        nlohmann::ordered_json line = {{"set", jsonText(path_)}, {"date", date.text()}, {"doubt", nullptr}};
        if (!date.doubt().empty())
            line["doubt"] = date.doubt();
        line["kind"] = item.kindText();
        line["name"] = platform::text::toUtf8(item.shownName());
        if (!inside.is_null())
            line["inside"] = inside;
        printResult(true, line, "");
    }

    void report(const std::string& fault)
    {
        progress_.clear();
        failed_ = true;
        std::cerr << "quillbox-set: " << onScreen(path_) << ": " << fault << '\n';
    }

    const FindOptions& options_;
    const std::vector<SetFiles>& sets_;
    SetDates dates_;
    std::u16string pattern_;
    platform::text::Case rule_;
    std::u16string part_;  // a text that each matching name contains
    bool isPath_;
    Words words_;
    Progress progress_;
    std::size_t number_ = 0;  // of the current set
    std::string path_;
    bool found_ = false;
    bool failed_ = false;
};

}  // namespace

int findItems(const FoundSets& found, const FindOptions& options)
{
    const int code = reportFaults(found);
    Finding finding(options, found.sets);
    for (std::size_t at = 0; at < found.sets.size(); at++)
        finding.searchSet(at);
    return std::max(code, finding.exitCode());
}

}  // namespace quillbox_set
