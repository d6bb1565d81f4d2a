#include "controls/bands_display.h"
#include "controls/control_classes.h"
#include "menu_resource.h"
#include "window/images.h"
#include "window/input.h"
#include "window/notify.h"
#include "window/window_life.h"

#include "ce/command_bands.h"
#include "ce/resource.h"

#include <algorithm>
#include <span>

namespace platform::window {

namespace {

constexpr std::u16string_view BandsClassName = u"ReBarWindow32";
constexpr std::u16string_view CommandBarClassName = u"ToolbarWindow32";

constexpr int BarHeight = 26;
constexpr int AdornmentWidth = 20;
constexpr int MostBandWidth = 1 << 16;
constexpr std::size_t MostButtons = 1024;

struct Band {
    HWND bar = nullptr;
    int width = 0;
    UINT style = 0;
    bool hasImage = false;
};

struct CommandBarState : ClassState {
    std::vector<MenuItem> menu;
    std::vector<BarButton> buttons;
    WORD bitmapId = 0;

    bool hasDisabled(WORD id) const
    {
        return std::ranges::any_of(buttons,
                                   [id](const BarButton& button) { return button.id == id && !button.enabled; });
    }
};

struct BandsState : ClassState {
    std::vector<Band> bands;
    int adornmentWidth = 0;
    int height = 0;
    WORD imagesId = 0;  // resource number of the image list's bitmap

    bool followsParentSize() const REQUIRES(coreMutex) override { return true; }
    bool disablesCommand(const Window& window, WORD id) const REQUIRES(coreMutex) override
    {
        return std::ranges::any_of(window.children, [id](Window* child) REQUIRES(coreMutex) {
            return child->windowClass->kind == WindowKind::CommandBar &&
                   stateOf<CommandBarState>(*child).hasDisabled(id);
        });
    }
};

// Places as many bands side by side as fit into the parent's width, and the other bands in further rows. A band with
// RBBS_BREAK begins a new row. Returns true if the height of all rows together has changed.
bool layOut(Window& bands) REQUIRES(coreMutex)
{
    auto& state = stateOf<BandsState>(bands);
    const RECT& area = bands.parent->rectangle;
    const int width = area.right - area.left;
    int x = 0;
    int y = 0;
    for (const Band& band : state.bands) {
        const bool full = x + band.width > width - state.adornmentWidth || (band.style & RBBS_BREAK);
        if (x > 0 && full) {
            x = 0;
            y += BarHeight;
        }
        if (Window* bar = findWindow(band.bar))
            bar->rectangle = {x, y, x + band.width, y + BarHeight};
        x += band.width;
    }
    const int height = state.bands.empty() ? 0 : y + BarHeight;
    bands.rectangle = {0, 0, width, height};
    announce(bands, Change::Bands);
    return std::exchange(state.height, height) != height;
}

void layOutAndNotify(HWND handle, bool always)
{
    {
        const Lock lock(coreMutex);
        Window* bands = findWindow(handle);
        if (!bands || (!layOut(*bands) && !always))
            return;
    }
    NMHDR header = {};
    header.code = RBN_HEIGHTCHANGE;
    notifyParent(handle, header);
}

LRESULT bandsProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == ParentSized) {
        layOutAndNotify(handle, true);
        return 0;
    }
    if (message == RB_GETBARHEIGHT)
        return static_cast<LRESULT>(CommandBands_Height(handle));
    return DefWindowProcW(handle, message, wParam, lParam);
}

BOOL addButtons(CommandBarState& state, WPARAM count, const TBBUTTON* buttons)
{
    if (!buttons || count > MostButtons - state.buttons.size())
        return FALSE;
    for (const TBBUTTON& button : std::span(buttons, count))
        state.buttons.push_back({.id = button.idCommand,
                                 .image = button.iBitmap,
                                 .enabled = (button.fsState & TBSTATE_ENABLED) != 0,
                                 .separator = (button.fsStyle & TBSTYLE_SEP) != 0});
    return TRUE;
}

BOOL enableButton(CommandBarState& state, WPARAM id, bool enable)
{
    const auto found = std::ranges::find(state.buttons, static_cast<int>(id), &BarButton::id);
    if (found == state.buttons.end())
        return FALSE;
    found->enabled = enable;
    return TRUE;
}

LRESULT commandBarProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != TB_ADDBUTTONSW && message != TB_ENABLEBUTTON && message != TB_BUTTONCOUNT)
        return DefWindowProcW(handle, message, wParam, lParam);
    const Lock lock(coreMutex);
    Window* bar = findWindow(handle);
    if (!bar)
        return 0;
    auto& state = stateOf<CommandBarState>(*bar);
    if (message == TB_BUTTONCOUNT)
        return static_cast<LRESULT>(state.buttons.size());
    const BOOL done = message == TB_ADDBUTTONSW
                          ? addButtons(state, wParam, reinterpret_cast<const TBBUTTON*>(lParam))
                          : enableButton(state, wParam, LOWORD(static_cast<std::uint64_t>(lParam)) != 0);
    announce(*bar->parent, Change::Bands);
    return done;
}

HWND makeBar(HWND bands, HINSTANCE instance)
{
    Creation creation;
    creation.className = CommandBarClassName;
    creation.style = WS_CHILD | WS_VISIBLE;
    creation.parent = bands;
    creation.instance = instance;
    return createWindow(std::move(creation));
}

bool addBand(HWND handle, HINSTANCE instance, const REBARBANDINFOW& info)
{
    if (info.cbSize != sizeof info)
        return fail(ERROR_INVALID_PARAMETER);
    const HWND bar = (info.fMask & RBBIM_CHILD) ? info.hwndChild : makeBar(handle, instance);
    const Lock lock(coreMutex);
    auto* state = findState<BandsState>(handle, WindowKind::CommandBands);
    if (!state || !findWindow(bar))
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    Band band;
    band.bar = bar;
    band.style = (info.fMask & RBBIM_STYLE) ? info.fStyle : 0;
    band.width = (info.fMask & RBBIM_SIZE) ? static_cast<int>(std::min<UINT>(info.cx, MostBandWidth)) : 0;
    band.hasImage = (info.fMask & RBBIM_IMAGE) && info.iImage == 0;
    state->bands.push_back(band);
    return true;
}

}  // namespace

std::vector<BandState> bandsOf(HWND commandBands)
{
    const Lock lock(coreMutex);
    std::vector<BandState> result;
    const auto* state = findState<BandsState>(commandBands, WindowKind::CommandBands);
    if (!state)
        return result;
    for (const Band& band : state->bands) {
        BandState copy;
        copy.bar = band.bar;
        if (const auto* bar = findState<CommandBarState>(band.bar, WindowKind::CommandBar)) {
            copy.menu = bar->menu;
            copy.buttons = bar->buttons;
            copy.bitmapId = bar->bitmapId;
        }
        if (const Window* window = findWindow(band.bar))
            copy.rectangle = window->rectangle;
        copy.imageId = band.hasImage ? state->imagesId : WORD{0};
        copy.gripper = !(band.style & RBBS_NOGRIPPER);
        result.push_back(std::move(copy));
    }
    return result;
}

WindowClass bandsClass()
{
    return {
        std::u16string(BandsClassName), bandsProcedure, WindowKind::CommandBands, false, makeStateOf<BandsState>, 0};
}

WindowClass commandBarClass()
{
    return {std::u16string(CommandBarClassName),
            commandBarProcedure,
            WindowKind::CommandBar,
            false,
            makeStateOf<CommandBarState>,
            0};
}

}  // namespace platform::window

using namespace platform::window;

HWND CommandBands_Create(HINSTANCE instance, HWND parent, UINT id, DWORD styles, HIMAGELIST images)
{
    Creation creation;
    creation.className = BandsClassName;
    creation.style = WS_CHILD | styles;
    creation.parent = parent;
    creation.id = static_cast<int>(id);
    creation.instance = instance;
    const HWND bands = createWindow(std::move(creation));
    const Lock lock(coreMutex);
    if (auto* state = findState<BandsState>(bands, WindowKind::CommandBands))
        state->imagesId = resourceIdOf(images);
    return bands;
}

BOOL CommandBands_AddBands(HWND bands, HINSTANCE instance, UINT count, const REBARBANDINFOW* infos)
{
    {
        const Lock lock(coreMutex);
        if (!findState<BandsState>(bands, WindowKind::CommandBands))
            return fail(ERROR_INVALID_WINDOW_HANDLE);
    }
    if (!infos)
        return fail(ERROR_INVALID_PARAMETER);
    for (const REBARBANDINFOW& info : std::span(infos, count))
        if (!addBand(bands, instance, info))
            return FALSE;
    layOutAndNotify(bands, false);
    return TRUE;
}

HWND CommandBands_GetCommandBar(HWND bands, UINT index)
{
    const Lock lock(coreMutex);
    const auto* state = findState<BandsState>(bands, WindowKind::CommandBands);
    if (!state || index >= state->bands.size()) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    return state->bands[index].bar;
}

// Only reserves width for the close box and, with CMDBAR_HELP, for the help button. The display (window/display.h)
// decides whether it shows them.
BOOL CommandBands_AddAdornments(HWND bands, HINSTANCE, DWORD flags, REBARBANDINFOW*)
{
    {
        const Lock lock(coreMutex);
        auto* state = findState<BandsState>(bands, WindowKind::CommandBands);
        if (!state)
            return fail(ERROR_INVALID_WINDOW_HANDLE);
        state->adornmentWidth = (flags & CMDBAR_HELP) ? 2 * AdornmentWidth : AdornmentWidth;
    }
    layOutAndNotify(bands, false);
    return TRUE;
}

BOOL CommandBands_Show(HWND bands, BOOL show)
{
    if (!IsWindow(bands))
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    ShowWindow(bands, show ? SW_SHOW : SW_HIDE);
    return TRUE;
}

UINT CommandBands_Height(HWND bands)
{
    const Lock lock(coreMutex);
    const auto* state = findState<BandsState>(bands, WindowKind::CommandBands);
    return state ? static_cast<UINT>(state->height) : 0;
}

int CommandBar_Height(HWND bar)
{
    const Lock lock(coreMutex);
    return findState<CommandBarState>(bar, WindowKind::CommandBar) ? BarHeight : 0;
}

BOOL CommandBar_InsertMenubar(HWND bar, HINSTANCE instance, WORD menuId, WORD)
{
    const HRSRC found = FindResourceW(instance, MAKEINTRESOURCEW(menuId), MAKEINTRESOURCEW(RT_MENU_ID));
    const auto* bytes = static_cast<const std::byte*>(LoadResource(instance, found));
    if (!bytes)
        return fail(ERROR_RESOURCE_NAME_NOT_FOUND);
    auto menu = readMenu({bytes, SizeofResource(instance, found)});
    if (!menu)
        return fail(ERROR_RESOURCE_DATA_NOT_FOUND);
    const Lock lock(coreMutex);
    auto* state = findState<CommandBarState>(bar, WindowKind::CommandBar);
    if (!state)
        return fail(ERROR_INVALID_WINDOW_HANDLE);
    state->menu = std::move(*menu);
    announce(*findWindow(bar)->parent, Change::Bands);
    return TRUE;
}

int CommandBar_AddBitmap(HWND bar, HINSTANCE instance, int bitmapId, int, int, int)
{
    if (!LoadImageW(instance, MAKEINTRESOURCEW(static_cast<UINT_PTR>(bitmapId)), IMAGE_BITMAP, 0, 0, 0))
        return -1;
    const Lock lock(coreMutex);
    auto* state = findState<CommandBarState>(bar, WindowKind::CommandBar);
    if (!state) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return -1;
    }
    state->bitmapId = static_cast<WORD>(bitmapId);
    announce(*findWindow(bar)->parent, Change::Bands);
    return 0;
}
