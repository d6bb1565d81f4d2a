#include "sealing.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/seal.h"
#include "archive/set_check.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include <algorithm>
#include <iostream>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

struct Outcome {
    bool good;
    std::string text;
};

Outcome seal(const SetFiles& files, bool force)
{
    const OpenedSet set(files);
    if (!set.isOpen())
        return {false, set.trouble()};
    const SealCheck old = checkSeal(files, set.mounted());
    if (old.isSealed && old.faults.empty())
        return {true, "is sealed already"};
    if (old.isSealed && !force)
        return {false, old.faults.front() + " (--force seals it again)"};
    // The digests are computed before the check. So they never include a change that was made during the check.
    const auto digests = digestsOf(set.mounted());
    const std::string fault = firstFaultOf(set, SealUse::Ignored);
    if (!fault.empty())
        return {false, "is unsound, so it isn't sealed: " + fault};
    if (!digests)
        return {false, "can't be read, so it isn't sealed"};
    const DWORD error = writeSeal(files, set.mounted(), *digests);
    return error == ERROR_SUCCESS ? Outcome{true, "sealed"} : Outcome{false, "can't be sealed: " + errorText(error)};
}

}  // namespace

int sealSets(const FoundSets& found, bool force)
{
    int code = reportFaults(found);
    Progress progress(found.sets.size());
    for (const SetFiles& files : found.sets) {
        progress.begin(pathOf(files));
        const Outcome outcome = seal(files, force);
        progress.clear();
        (outcome.good ? std::cout : std::cerr) << onScreen(pathOf(files)) << ": " << outcome.text << '\n';
        if (!outcome.good)
            code = std::max(code, exitFaults);
    }
    return code;
}

}  // namespace quillbox_set
