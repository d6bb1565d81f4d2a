#include "pruning.h"

#include "archive/rotation.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include <iostream>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

void print(const JudgedSet& set, bool removes, bool json)
{
    nlohmann::ordered_json line = {{"set", jsonText(pathOf(set.files))}, {"date", set.date.text()}};
    line["sound"] = set.isSound;
    line["kept"] = !removes;
    if (!removes)
        line["reason"] = jsonText(set.reason);
    printResult(json, line,
                (removes ? "remove  " : "keep    ") + onScreen(pathOf(set.files)) + "  " + set.date.textWithDoubt() +
                    (removes ? "" : "  " + set.reason));
}

}  // namespace

int pruneSets(const FoundSets& found, const KeepRules& rules, bool dryRun, bool json)
{
    int code = reportFaults(found);
    if (code != exitGood)
        return code;  // a set that wasn't found could be the newest
    Progress progress(found.sets.size());
    const std::vector<JudgedSet> judged = judgeSets(found.sets, rules, progress);
    progress.clear();
    for (const JudgedSet& set : judged) {
        const bool removes = set.isToGo();
        print(set, removes, json);
        if (!set.isSound)
            code = exitFaults;
        if (!removes || dryRun)
            continue;
        checkStop();
        if (const std::string failure = removeSet(set.files); !failure.empty()) {
            std::cerr << "quillbox-set: " << onScreen(pathOf(set.files)) << " can't be removed: " << onScreen(failure)
                      << '\n';
            code = exitFaults;
        }
    }
    return code;
}

}  // namespace quillbox_set
