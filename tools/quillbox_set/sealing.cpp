#include "sealing.h"

#include "archive/long_work.h"
#include "archive/seal.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include <algorithm>
#include <iostream>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

int sealSets(const FoundSets& found, bool force)
{
    int code = reportFaults(found);
    Progress progress(found.sets.size());
    for (const SetFiles& files : found.sets) {
        progress.begin(pathOf(files));
        const SealOutcome outcome = sealSet(files, force);
        progress.clear();
        (outcome.isSealed ? std::cout : std::cerr) << onScreen(pathOf(files)) << ": " << outcome.text << '\n';
        if (!outcome.isSealed)
            code = std::max(code, exitFaults);
    }
    return code;
}

}  // namespace quillbox_set
