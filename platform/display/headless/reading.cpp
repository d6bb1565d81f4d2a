#include "reading.h"

#include "pattern.h"

#include "ce/controls.h"
#include "ce/dialog.h"
#include "controls/bands_display.h"
#include "controls/list_display.h"

#include <algorithm>

namespace platform::headless {

using window::WindowKind;
using window::WindowState;

namespace {

bool menuHas(const std::vector<window::MenuItem>& items, int id)
{
    return std::ranges::any_of(items, [&](const window::MenuItem& item) {
        return (item.id == id && item.enabled && !item.separator) || menuHas(item.items, id);
    });
}

}  // namespace

std::optional<WindowState> findControl(HWND top, int id)
{
    const std::optional<Snapshot> snapshot = snapshotOf(top);
    if (!snapshot)
        return std::nullopt;
    const auto found = std::ranges::find_if(
        snapshot->controls, [&](const WindowState& control) { return control.id == id && control.visible; });
    return found == snapshot->controls.end() ? std::nullopt : std::optional(*found);
}

std::u16string textsOf(const Snapshot& snapshot)
{
    std::u16string texts;
    for (const WindowState& control : snapshot.controls) {
        const bool isRead = control.kind == WindowKind::Static || control.kind == WindowKind::Edit;
        if (!isRead || !control.visible || control.text.empty())
            continue;
        if (!texts.empty())
            texts += u"\r\n";
        texts += control.text;
    }
    return texts;
}

std::u16string textOf(const Snapshot& snapshot)
{
    const std::u16string texts = textsOf(snapshot);
    if (snapshot.window.kind == WindowKind::MessageBox)
        return onOneLine(texts);
    return onOneLine(snapshot.window.text + (texts.empty() ? u"" : u"\r\n") + texts);
}

bool isCheckable(const WindowState& button)
{
    const DWORD kind = button.style & 0xF;
    return kind == BS_CHECKBOX || kind == BS_AUTOCHECKBOX || kind == BS_RADIOBUTTON || kind == BS_3STATE ||
           kind == BS_AUTO3STATE || kind == BS_AUTORADIOBUTTON;
}

std::vector<std::u16string> linesOf(const WindowState& control)
{
    std::vector<std::u16string> lines;
    if (control.kind == WindowKind::ListBox) {
        for (const window::ListRow& row : window::listRows(control.window))
            lines.push_back(onOneLine(row.text));
        return lines;
    }
    std::u16string line = onOneLine(control.text);
    if (control.kind == WindowKind::Button && isCheckable(control))
        line.insert(0, control.check ? u"[x] " : u"[ ] ");
    lines.push_back(std::move(line));
    return lines;
}

bool hasCommand(HWND top, int id)
{
    for (const HWND child : window::childrenOf(top)) {
        for (const window::BandState& band : window::bandsOf(child)) {
            const bool button = std::ranges::any_of(
                band.buttons, [&](const window::BarButton& b) { return b.id == id && b.enabled && !b.separator; });
            if (button || menuHas(band.menu, id))
                return true;
        }
    }
    return false;
}

HWND focusIn(HWND top)
{
    if (const std::optional<Snapshot> snapshot = snapshotOf(top)) {
        for (const WindowState& control : snapshot->controls) {
            if (control.focused)
                return control.window;
        }
    }
    return top;
}

std::string_view answerName(int id)
{
    switch (id) {
    case IDOK:
        return "ok";
    case IDCANCEL:
        return "cancel";
    case IDABORT:
        return "abort";
    case IDRETRY:
        return "retry";
    case IDIGNORE:
        return "ignore";
    case IDYES:
        return "yes";
    case IDNO:
        return "no";
    default:
        return {};
    }
}

Buttons buttonsOf(const Snapshot& messageBox)
{
    constexpr DWORD ButtonKind = 0xF;
    Buttons buttons;
    for (const WindowState& control : messageBox.controls) {
        if (control.kind != WindowKind::Button)
            continue;
        buttons.all += buttons.all.empty() ? "" : ",";
        buttons.all += answerName(control.id);
        if ((control.style & ButtonKind) == BS_DEFPUSHBUTTON)
            buttons.defaultButton = answerName(control.id);
    }
    return buttons;
}

}  // namespace platform::headless
