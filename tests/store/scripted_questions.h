// scripted_questions.h - replaces the shell: records the questions of a restore and answers them.
#pragma once

#include "set/set_questions.h"

#include <string>
#include <vector>

struct ScriptedQuestions {
    std::vector<std::u16string> asked;  // names of the databases that may be replaced
    bool yes = false;
    bool waitCursor = true;        // the wait cursor shows now
    bool waitCursorAsked = false;  // the wait cursor showed during a question
    void (*answered)() = nullptr;  // called after each answer
};
extern ScriptedQuestions gQuestions;

// Resets gQuestions: nothing was asked, and the answer is No.
void answerQuestions();
