#include "job_questions.h"

#include "kernel/job.h"

#include "ce/dialog.h"
#include "ce/outcome.h"

#include <cstdint>
#include <map>

namespace platform::window {

namespace {

constexpr UINT KindBits = 0xF;

struct StandingAnswers {
    std::uint64_t job = 0;  // the job to which the answers apply
    std::map<std::u16string, int> byKind;
};

// Returns the answers for the job that is in progress. Removes the answers for an earlier job.
StandingAnswers& answers() REQUIRES(coreMutex)
{
    static StandingAnswers all;
    if (all.job != kernel::currentJob())
        all = {kernel::currentJob(), {}};
    return all;
}

}  // namespace

// The kind consists of the caption and the text before the name of the file or database. In the text of a question,
// such a name follows a colon, or it is a path that begins with a backslash. So the kind ends before the first colon or
// backslash.
std::u16string questionKindOf(std::u16string_view text, std::u16string_view caption, UINT type)
{
    if (kernel::currentJob() == 0 || (type & KindBits) != MB_YESNO)
        return {};
    return std::u16string(caption) + u'\n' + std::u16string(text.substr(0, text.find_first_of(u":\\")));
}

int knownAnswer(const std::u16string& kind)
{
    if (kind.empty())
        return 0;
    if (JobIsToStop())
        return IDNO;
    const Lock lock(coreMutex);
    const auto& known = answers().byKind;
    const auto found = known.find(kind);
    return found == known.end() ? 0 : found->second;
}

void answerAllOfKind(const std::u16string& kind, int answer)
{
    const Lock lock(coreMutex);
    answers().byKind[kind] = answer;
}

}  // namespace platform::window
