#include "scripted_user.h"

#include "engine/options.h"
#include "engine/questions.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"

#include "ce/dialog.h"
#include "ce/resource.h"
#include "ce/text.h"

#include <gtest/gtest.h>

ScriptedUser gUser;

Options gOptions;
HWND gMainWindow;
WCHAR gTextA[TextChars];
WCHAR gTextB[TextChars];

namespace {

HWND const Window = reinterpret_cast<HWND>(1);

void note(std::u16string line)
{
    gUser.shown.push_back(std::move(line));
}

// Records the line. A call for no window does nothing.
DWORD noteIn(HWND progress, std::u16string line)
{
    if (progress == Window)
        note(std::move(line));
    return 1;
}

bool answerTo(const std::u16string& question)
{
    note(u"ask " + question);
    if (gUser.answers.empty())
        return false;
    const bool yes = gUser.answers.front();
    gUser.answers.erase(gUser.answers.begin());
    return yes;
}

std::u16string number(unsigned value)
{
    WCHAR text[16];
    wsprintfW(text, u"%u", value);
    return text;
}

}  // namespace

std::vector<std::u16string> ScriptedUser::shownWith(const std::u16string& prefix) const
{
    std::vector<std::u16string> found;
    for (const std::u16string& line : shown) {
        if (line.starts_with(prefix))
            found.push_back(line.substr(prefix.size()));
    }
    return found;
}

std::string ScriptedUser::transcript() const
{
    std::string all;
    for (const std::u16string& line : shown)
        all += (all.empty() ? "" : "; ") + std::string(line.begin(), line.end());
    return all;
}

void answerRuns()
{
    gRunQuestions = {
        .mayReplaceSet = [](const WCHAR* path) { return answerTo(u"override " + std::u16string(path)); },
        .mayReplaceFile = [](const WCHAR* path) { return answerTo(u"replace " + std::u16string(path)); },
        .mayReplaceDatabase = [](const WCHAR* name) { return answerTo(u"replace database " + std::u16string(name)); },
        .showRegistryRestored = [] { note(u"registry restored"); },
        .openProgress = ProgressOpen};
}

WCHAR* LoadText(UINT id, WCHAR (&scratch)[TextChars])
{
    static const bool ready = platform::resource::setResources(quillbox::embeddedResources());
    EXPECT_TRUE(ready && LoadStringW(nullptr, id, scratch, TextChars) > 0) << id;
    return scratch;
}

INT_PTR ShowBackupDialog(WORD kind, WCHAR* comment)
{
    note(u"dialog backup " + number(kind));
    if (gUser.confirms)
        CopyText(comment, TextChars, gUser.comment.c_str());
    return gUser.confirms;
}

INT_PTR ShowRestoreDialog(WORD mode, const WCHAR* listPath)
{
    note(u"dialog restore " + number(mode) + u"|" + listPath);
    return gUser.confirms;
}

INT_PTR ChooseFromList(HWND, const WCHAR* prompt, const WCHAR* choices, WCHAR* result, DescribeChoice describe)
{
    std::u16string line = u"choose " + std::u16string(prompt);
    bool offered = false;
    for (; *choices; choices += wcslen(choices) + 1) {
        line += u"|" + std::u16string(choices);
        WCHAR detail[TextChars];
        describe(choices, detail);
        gUser.details.push_back(detail);
        offered |= gUser.choice == choices;
    }
    note(line);
    if (offered)
        CopyText(result, MAX_PATH, gUser.choice.c_str());
    return offered;
}

HWND ProgressOpen(const WCHAR* title, const WCHAR* message, DWORD range, DWORD step)
{
    note(u"open " + std::u16string(title) + u"|" + message + u"|" + number(range) + u"|" + number(step));
    return Window;
}

DWORD ProgressStep(HWND progress, DWORD)
{
    return noteIn(progress, u"step");
}

DWORD ProgressSetMessage(HWND progress, const WCHAR* text)
{
    noteIn(progress, u"message " + std::u16string(text));
    if (gUser.seesMessage)
        gUser.seesMessage(text);
    return 1;
}

DWORD ProgressSetCount(HWND progress, const WCHAR* text)
{
    const std::u16string line = u"count " + std::u16string(text);
    if (progress == Window && gUser.notesAll && gUser.shown.back() != line)
        note(line);
    if (gUser.seesCount)
        gUser.seesCount();
    return 1;
}

DWORD ProgressAnimate(HWND progress)
{
    return noteIn(progress, u"animate");
}

DWORD ProgressClose(HWND progress)
{
    return noteIn(progress, u"close");
}

int MessageBoxW(HWND, const WCHAR* text, const WCHAR* caption, UINT type)
{
    note(u"box " + std::u16string(caption ? caption : u"(none)") + u"|" + text + u"|" + number(type));
    return IDOK;
}

HCURSOR SetCursor(HCURSOR cursor)
{
    const bool waits = cursor != nullptr;
    if (gUser.notesAll && waits != gUser.waitCursor)
        note(waits ? u"wait" : u"no wait");
    gUser.waitCursor = waits;
    return nullptr;
}

HCURSOR LoadCursorW(HINSTANCE, const WCHAR* name)
{
    return name == reinterpret_cast<const WCHAR*>(IDC_WAIT) ? reinterpret_cast<HCURSOR>(1) : nullptr;
}
