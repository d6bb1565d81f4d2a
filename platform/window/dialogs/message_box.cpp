#include "dialog.h"
#include "dialog_state.h"

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

// From left to right. Empty for a type that doesn't exist.
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

// The answer of Esc and the close box, which must never mean consent.
int refusalOf(UINT type)
{
    switch (type & KindBits) {
    case MB_OK:
        return IDOK;
    case MB_ABORTRETRYIGNORE:
        return IDABORT;
    case MB_YESNO:
        return IDNO;
    default:
        return IDCANCEL;
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

INT_PTR messageBoxProcedure(HWND box, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG) {
        SetFocus(GetDlgItem(box, defaultOf(typeOf(box))));
        return FALSE;
    }
    if (message == WM_COMMAND) {
        const int id = LOWORD(wParam);
        EndDialog(box, GetDlgItem(box, id) ? id : refusalOf(typeOf(box)));
        return TRUE;
    }
    if (message == WM_CLOSE) {
        EndDialog(box, refusalOf(typeOf(box)));
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
    layout.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_CENTER | DS_MODALFRAME;
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
    DialogLaunch launch;
    launch.layout = layOut(text ? text : u"", caption ? caption : u"Error", type);
    launch.inPixels = true;
    launch.owner = owner;
    launch.procedure = messageBoxProcedure;
    launch.messageBox = true;
    launch.messageBoxType = type;
    const INT_PTR answer = runModal(launch);
    return answer > 0 ? static_cast<int>(answer) : 0;
}
