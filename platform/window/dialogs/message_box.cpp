#include "dialog.h"
#include "dialog_state.h"
#include "job_questions.h"
#include "window/input.h"

#include "kernel/job.h"

#include "ce/controls.h"

#include <algorithm>
#include <span>

using namespace platform::window;

namespace {

struct Answer {
    int id;
    const char16_t* text;
};

constexpr Answer Ok = {IDOK, u"OK"};
constexpr Answer Cancel = {IDCANCEL, u"Cancel"};
constexpr Answer Abort = {IDABORT, u"Abort"};
constexpr Answer Retry = {IDRETRY, u"Retry"};
constexpr Answer Ignore = {IDIGNORE, u"Ignore"};
constexpr Answer Yes = {IDYES, u"Yes"};
constexpr Answer No = {IDNO, u"No"};

constexpr UINT KindBits = 0xF;
constexpr UINT IconBits = 0xF0;
constexpr UINT DefaultBits = 0xF00;

constexpr int Margin = 10;
constexpr int CharacterWidth = 6;
constexpr int LineHeight = 13;
constexpr int CharactersInLine = 50;
constexpr int FewestCharacters = 16;
constexpr int MostLines = 30;
constexpr int IconSize = 32;
constexpr int ButtonWidth = 60;
constexpr int ButtonHeight = 18;

// Returns the answers that a message box of this type offers, from left to right. The result is empty for a type that
// doesn't exist.
std::span<const Answer> answersOf(UINT type)
{
    static constexpr Answer JustOk[] = {Ok};
    static constexpr Answer OkCancel[] = {Ok, Cancel};
    static constexpr Answer AbortRetryIgnore[] = {Abort, Retry, Ignore};
    static constexpr Answer YesNoCancel[] = {Yes, No, Cancel};
    static constexpr Answer YesNo[] = {Yes, No};
    static constexpr Answer RetryCancel[] = {Retry, Cancel};
    switch (type & KindBits) {
    case MB_OK:
        return JustOk;
    case MB_OKCANCEL:
        return OkCancel;
    case MB_ABORTRETRYIGNORE:
        return AbortRetryIgnore;
    case MB_YESNOCANCEL:
        return YesNoCancel;
    case MB_YESNO:
        return YesNo;
    case MB_RETRYCANCEL:
        return RetryCancel;
    default:
        return {};
    }
}

// Returns the answer for Esc and the close box, or 0 if they do nothing. They do nothing in types with several answers
// and no Cancel, so the user must choose an answer.
int escapeOf(UINT type)
{
    switch (type & KindBits) {
    case MB_OK:
        return IDOK;
    case MB_ABORTRETRYIGNORE:
    case MB_YESNO:
        return 0;
    default:
        return IDCANCEL;
    }
}

// Returns the answer that declines what the box asks: Abort, No or Cancel. For a box with only OK, returns OK.
int refusalOf(UINT type)
{
    switch (type & KindBits) {
    case MB_ABORTRETRYIGNORE:
        return IDABORT;
    case MB_YESNO:
        return IDNO;
    default:
        return escapeOf(type);
    }
}

int defaultOf(UINT type)
{
    const std::span<const Answer> answers = answersOf(type);
    const std::size_t wanted = (type & DefaultBits) / MB_DEFBUTTON2;
    return answers[wanted < answers.size() ? wanted : 0].id;
}

UINT typeOf(HWND box)
{
    const Lock lock(coreMutex);
    const DialogState* dialog = findDialog(findWindow(box));
    return dialog ? dialog->messageBoxType : 0;
}

void end(HWND box, int answer)
{
    if (answer)
        EndDialog(box, answer);
}

std::u16string questionKind(HWND box)
{
    const Lock lock(coreMutex);
    const DialogState* dialog = findDialog(findWindow(box));
    return dialog ? dialog->questionKind : std::u16string();
}

HWND ownerOf(HWND box)
{
    const Lock lock(coreMutex);
    const Window* window = findWindow(box);
    return window ? window->owner : nullptr;
}

// Ends the message box with `answer`, or with the answer of refusalOf() if `answer` is 0. If the message box is a
// question of a job, `reach` says whether the answer also applies to later questions or stops the job.
void answer(HWND box, int answer, AnswerReach reach)
{
    const std::u16string kind = questionKind(box);
    const bool stops = reach == AnswerReach::Job || reach == AnswerReach::JobAndOwner;
    if (!kind.empty() && stops)
        platform::kernel::stopJob();
    if (!kind.empty() && reach == AnswerReach::AllOfItsKind)
        answerAllOfKind(kind, answer);
    const HWND owner = ownerOf(box);
    end(box, answer ? answer : refusalOf(typeOf(box)));
    if (reach == AnswerReach::JobAndOwner)
        (void)postClose(owner);  // the close stays queued until the job ends
}

INT_PTR messageBoxProcedure(HWND box, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        SetFocus(GetDlgItem(box, defaultOf(typeOf(box))));
        return FALSE;
    }
    if (message == WM_COMMAND) {
        const int id = LOWORD(wParam);
        end(box, GetDlgItem(box, id) ? id : escapeOf(typeOf(box)));
        return TRUE;
    }
    if (message == InputAnswer) {
        answer(box, static_cast<int>(wParam), static_cast<AnswerReach>(lParam));
        return TRUE;
    }
    if (message == WM_CLOSE) {
        end(box, escapeOf(typeOf(box)));
        return TRUE;
    }
    return FALSE;
}

struct TextExtent {
    int columns;
    int lines;
};

TextExtent measure(std::u16string_view text)
{
    TextExtent extent = {FewestCharacters, 0};
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find(u'\n', at), text.size());
        const int length = static_cast<int>(std::min<std::size_t>(end - at, CharactersInLine * MostLines));
        extent.columns = std::max(extent.columns, std::min(length, CharactersInLine));
        extent.lines += 1 + std::max(length - 1, 0) / CharactersInLine;
        at = end + 1;
    }
    extent.lines = std::min(extent.lines, MostLines);
    return extent;
}

ControlTemplate controlAt(int x, int y, int width, int height)
{
    ControlTemplate control;
    control.style = WS_CHILD | WS_VISIBLE;
    control.x = static_cast<SHORT>(x);
    control.y = static_cast<SHORT>(y);
    control.width = static_cast<SHORT>(width);
    control.height = static_cast<SHORT>(height);
    control.id = -1;
    return control;
}

void addButtons(DialogTemplate& layout, UINT type, int top)
{
    const std::span<const Answer> answers = answersOf(type);
    const int count = static_cast<int>(answers.size());
    int x = (layout.width - count * ButtonWidth - (count - 1) * Margin) / 2;
    for (const Answer& answer : answers) {
        ControlTemplate button = controlAt(x, top, ButtonWidth, ButtonHeight);
        button.style |= WS_TABSTOP | (answer.id == defaultOf(type) ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON);
        button.id = answer.id;
        button.className = u"Button";
        button.text = answer.text;
        layout.controls.push_back(std::move(button));
        x += ButtonWidth + Margin;
    }
}

DialogTemplate layOut(std::u16string_view text, std::u16string_view caption, UINT type)
{
    const TextExtent extent = measure(text);
    const bool hasIcon = type & IconBits;
    const int textX = hasIcon ? 2 * Margin + IconSize : Margin;
    const int textHeight = std::max(extent.lines * LineHeight, hasIcon ? IconSize : LineHeight);
    const int buttons = static_cast<int>(answersOf(type).size());
    const int textWidth = extent.columns * CharacterWidth;

    DialogTemplate layout;
    layout.style = WS_POPUP | WS_CAPTION | DS_CENTER | DS_MODALFRAME;
    if (escapeOf(type))
        layout.style |= WS_SYSMENU;  // the close box
    layout.title = caption;
    layout.width = static_cast<SHORT>(std::max(textX + textWidth + Margin, buttons * (ButtonWidth + Margin) + Margin));
    layout.height = static_cast<SHORT>(3 * Margin + textHeight + ButtonHeight);
    if (hasIcon) {
        ControlTemplate icon = controlAt(Margin, Margin, IconSize, IconSize);
        icon.style |= SS_ICON;
        icon.className = u"Static";
        layout.controls.push_back(std::move(icon));
    }
    ControlTemplate label = controlAt(textX, Margin, layout.width - textX - Margin, textHeight);
    label.style |= SS_LEFT | SS_NOPREFIX;
    label.className = u"Static";
    label.text = text;
    layout.controls.push_back(std::move(label));
    addButtons(layout, type, 2 * Margin + textHeight);
    return layout;
}

}  // namespace

int MessageBoxW(HWND owner, const WCHAR* text, const WCHAR* caption, UINT type)
{
    if (owner && !IsWindow(owner))
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    if (answersOf(type).empty())
        return fail(ERROR_INVALID_PARAMETER);
    const WCHAR* const shownText = text ? text : u"";
    const WCHAR* const shownCaption = caption ? caption : u"Error";
    DialogLaunch launch;
    launch.questionKind = questionKindOf(shownText, shownCaption, type);
    if (const int known = knownAnswer(launch.questionKind))
        return known;
    launch.layout = layOut(shownText, shownCaption, type);
    launch.inPixels = true;
    launch.owner = owner;
    launch.procedure = messageBoxProcedure;
    launch.messageBox = true;
    launch.messageBoxType = type;
    const INT_PTR result = runModal(launch);
    return result > 0 ? static_cast<int>(result) : 0;
}
