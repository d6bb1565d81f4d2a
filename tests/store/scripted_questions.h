// scripted_questions.h - replaces the shell: records the questions of a restore and answers them.
#pragma once

#include "set/set_questions.h"

#include <string>
#include <vector>

struct ScriptedQuestions {
    std::vector<std::u16string> asked;  // names of the databases that may be replaced
    bool yes = false;
    bool waitCursor = true;        // now
    bool waitCursorAsked = false;  // it showed while a question stood
    void (*answered)() = nullptr;  // called after each answer
};
extern ScriptedQuestions gQuestions;

// Begins again, with nothing asked and No as the answer.
void answerQuestions();
