// job_questions.h - the questions that a job asks (ce/outcome.h), and answers that apply to several questions.
//
// A job is one backup or restore. It can ask about each of its files. Two questions are of the same kind if they have
// the same caption and the same words before the name of the file or database. If the user answers all questions of a
// kind at once, the answer applies only to the current job.
#pragma once

#include "window/core_mutex.h"

#include "ce/types.h"

#include <string>
#include <string_view>

namespace platform::window {

// Returns the kind of a question. The result is empty if the answers to the question aren't Yes and No, or if no job is
// in progress.
std::u16string questionKindOf(std::u16string_view text, std::u16string_view caption, UINT type);

// Returns the answer to questions of this kind, or 0 if the user must answer. If the job is to stop, the answer is No.
// Otherwise it is the answer that the user gave to all questions of the kind.
int knownAnswer(const std::u16string& kind) EXCLUDES(coreMutex);

void answerAllOfKind(const std::u16string& kind, int answer) EXCLUDES(coreMutex);

}  // namespace platform::window
