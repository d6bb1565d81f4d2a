#include "scripted_questions.h"

#include "ce/window.h"

ScriptedQuestions gQuestions;

namespace {

bool answer(const WCHAR* name)
{
    gQuestions.asked.emplace_back(name);
    gQuestions.waitCursorAsked |= gQuestions.waitCursor;
    if (gQuestions.answered)
        gQuestions.answered();
    return gQuestions.yes;
}

}  // namespace

void answerQuestions()
{
    gQuestions = {};
    gRunQuestions = {};
    gRunQuestions.mayReplaceDatabase = answer;
}

HCURSOR LoadCursorW(HINSTANCE, const WCHAR* name)
{
    return reinterpret_cast<HCURSOR>(const_cast<WCHAR*>(name));
}

HCURSOR SetCursor(HCURSOR cursor)
{
    gQuestions.waitCursor = cursor != nullptr;
    return nullptr;
}
