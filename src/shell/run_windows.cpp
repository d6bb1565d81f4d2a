// run_windows.cpp - shows the questions of a run as message boxes.

#include "dialogs.h"
#include "engine/questions.h"

#include "ce/text.h"

namespace {

bool AskReplace(TextId question, const WCHAR* name)
{
    WCHAR text[TextChars + MAX_PATH];
    wsprintfW(text, LoadText(question, gTextA), name);
    return MessageBoxW(gMainWindow, text, LoadText(TextWarning, gTextB),
                       MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2) == IDYES;
}

bool AskOverride(const WCHAR* listPath)
{
    WCHAR text[TextChars + MAX_PATH];
    wsprintfW(text, LoadText(TextOverrideFormat, gTextA), listPath);
    return MessageBoxW(gMainWindow, text, u"Info?", MB_YESNO | MB_DEFBUTTON2) == IDYES;
}

bool AskReplaceFile(const WCHAR* path)
{
    return AskReplace(TextFileExistsFormat, path);
}

bool AskReplaceDatabase(const WCHAR* name)
{
    return AskReplace(TextDatabaseExistsFormat, name);
}

void ShowRegistryRestored()
{
    MessageBoxW(gMainWindow, LoadText(TextRegistryRestored, gTextA), LoadText(TextRestore, gTextB), MB_OK);
}

}  // namespace

void SetRunWindows()
{
    gRunQuestions = {AskOverride, AskReplaceFile, AskReplaceDatabase, ShowRegistryRestored, ProgressOpen};
}
