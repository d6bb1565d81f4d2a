#include "scripted_questions.h"

#include "ce/dialog.h"
#include "ce/text.h"

ScriptedQuestions gQuestions;
HWND gMainWindow = nullptr;
WCHAR gTextA[TextChars];
WCHAR gTextB[TextChars];

WCHAR* LoadText(UINT id, WCHAR (&scratch)[TextChars])
{
    CopyText(scratch, id == 135 ? u"Database:%s exists replace ?" : id == 142 ? u"Warning" : u"");
    return scratch;
}

int MessageBoxW(HWND, const WCHAR* text, const WCHAR* caption, UINT type)
{
    gQuestions.asked.emplace_back(text);
    gQuestions.captionOfLast = caption;
    gQuestions.typeOfLast = type;
    gQuestions.waitCursorAsked |= gQuestions.waitCursor;
    if (gQuestions.answered)
        gQuestions.answered();
    return gQuestions.yes ? IDYES : IDNO;
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
