// scripted_questions.h - the shell and the user in one: what restoring a database asks, and what it is answered.
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
    void (*answered)() = nullptr;  // called right behind each answer
};
extern ScriptedQuestions gQuestions;
