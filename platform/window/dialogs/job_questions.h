// job_questions.h - the questions that a job asks (ce/outcome.h), and the answers that hold for more than one of them.
//
// A job can ask about each of its files. Two questions are of the same kind if they have the same caption and the same
// words up to the name of the file or database. An answer that holds for all of a kind is forgotten with the job.
#pragma once

#include "window/core_mutex.h"

#include "ce/types.h"

#include <string>
#include <string_view>

namespace platform::window {

// The kind of a question with the answers yes and no. Empty if no job is in progress.
std::u16string questionKindOf(std::u16string_view text, std::u16string_view caption, UINT type);

// The answer to a question of this kind that isn't shown: the user has answered all of the kind, or the job is to stop,
// which is a No. 0 if the user must answer.
int knownAnswer(const std::u16string& kind) EXCLUDES(coreMutex);

void answerAllOfKind(const std::u16string& kind, int answer) EXCLUDES(coreMutex);

}  // namespace platform::window
