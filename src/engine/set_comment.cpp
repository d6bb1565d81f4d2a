// set_comment.cpp - see set_comment.h.

#include "set_comment.h"

#include "engine/questions.h"
#include "set/set_state.h"

#include "ce/text.h"
#include "ce/time.h"

namespace {


// Day first where the user's short date begins with the day; month first everywhere else.
bool DayComesFirst()
{
    WCHAR format[TextChars] = {};
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, format, TextChars);
    return format[0] == u'd';
}

}  // namespace

void ComposeComment()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    const bool dayFirst = DayComesFirst();
    WCHAR composed[TextChars];
    wsprintfW(composed, LoadText(TextCommentFormat, gTextA), dayFirst ? now.wDay : now.wMonth,
              dayFirst ? now.wMonth : now.wDay, now.wYear, now.wHour, now.wMinute, gComment);
    CopyText(gComment, composed);
}
