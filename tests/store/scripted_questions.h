// scripted_questions.h - replaces the shell: records the questions of a restore and answers them.
#pragma once

#include "set/set_questions.h"

#include <string>
#include <vector>

struct ScriptedQuestions {
    std::vector<std::u16string> asked;
    bool yes = false;
    std::u16string captionOfLast;
    UINT typeOfLast = 0;
    bool waitCursor = true;        // now
    bool waitCursorAsked = false;  // it showed while a question stood
    void (*answered)() = nullptr;  // called after each answer
};
extern ScriptedQuestions gQuestions;
