// Damaged templates and menus, and the command bands that a menu goes to.
#include "test_user.h"

#include "dialog_template.h"
#include "menu_resource.h"

#include "ce/command_bands.h"
#include "ce/resource.h"
#include "controls/bands_display.h"

#include <gtest/gtest.h>

namespace platform::window::test {
namespace {

const std::vector<TestControl> Controls = {
    {u"Static", u"Label", -1, 0},
    {u"msctls_progress32", u"", 1001, 0},
    {u"LISTBOX", u"", 40003, LBS_SORT},
};

TEST(DialogTemplateTest, BothFormsGiveTheSameDialog)
{
    for (const bool extended : {false, true}) {
        const auto dialog = readDialogTemplate(templateBytes(u"Title", Controls, extended, 0x80c808c0));
        ASSERT_TRUE(dialog);
        EXPECT_EQ(dialog->title, u"Title");
        EXPECT_EQ(dialog->style, 0x80c808c0);
        EXPECT_EQ(dialog->exStyle, WS_EX_CAPTIONOKBTN);
        ASSERT_EQ(dialog->controls.size(), 3U);
        EXPECT_EQ(dialog->controls[0].id, -1);
        EXPECT_EQ(dialog->controls[0].className, u"Static");
        EXPECT_EQ(dialog->controls[2].id, 40003);
        EXPECT_EQ(dialog->controls[2].y, 29);
    }
    EXPECT_EQ(horizontalPixels(151), 227);  // 226.5
    EXPECT_EQ(horizontalPixels(-151), -227);
    EXPECT_EQ(verticalPixels(111), 180);  // 180.375
}

TEST(DialogTemplateTest, TemplateCutAtAnyByteIsRefused)
{
    for (const bool extended : {false, true})
        for (const DWORD style : {0x80c808c0U, 0x80c80880U}) {
            const std::vector<std::byte> whole = templateBytes(u"T", Controls, extended, style);
            for (std::size_t size = 0; size < whole.size(); ++size) {
                const std::vector<std::byte> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
                ASSERT_FALSE(readDialogTemplate(cut)) << size;
            }
        }
}

TEST(DialogTemplateTest, AnyWordOfATemplateMayHoldAnything)
{
    for (const bool extended : {false, true}) {
        const std::vector<std::byte> whole = templateBytes(u"T", Controls, extended, 0x80c808c0);
        for (std::size_t at = 0; at + 1 < whole.size(); at += 2)
            for (const unsigned value : {0U, 1U, 0x7FFFU, 0x8000U, 0xFFFFU}) {
                std::vector<std::byte> damaged = whole;
                damaged[at] = static_cast<std::byte>(value & 0xFF);
                damaged[at + 1] = static_cast<std::byte>(value >> 8);
                const auto dialog = readDialogTemplate(damaged);
                ASSERT_TRUE(!dialog || dialog->controls.size() <= Controls.size());
                // What can be read can be opened, or is refused as a whole.
                const HWND window = CreateDialogIndirectParamW(
                    nullptr, at % 8 == 0 ? addResource(5, 9999, damaged) : nullptr, nullptr,
                    [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
                if (window)
                    DestroyWindow(window);
            }
    }
}

std::vector<std::byte> menuBytes()
{
    std::vector<std::byte> bytes;
    const auto word = [&bytes](unsigned value) {
        bytes.push_back(static_cast<std::byte>(value & 0xFF));
        bytes.push_back(static_cast<std::byte>(value >> 8));
    };
    const auto text = [&word](const char16_t* characters) {
        for (; *characters; ++characters)
            word(*characters);
        word(0);
    };
    word(0), word(0);
    word(0x10), text(u"File");
    word(0x1), word(40010), text(u"Filter...");
    word(0), word(0), text(u"");
    word(0x80), word(40002), text(u"Exit");
    word(0x90), text(u"Operations");
    word(0x90), text(u"Backup");
    word(0x80), word(40003), text(u"Full...");
    return bytes;
}

TEST(MenuTest, NestedMenuIsReadWholeOrNotAtAll)
{
    const std::vector<std::byte> whole = menuBytes();
    const auto menu = readMenu(whole);
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->size(), 2U);
    EXPECT_FALSE((*menu)[0].items[0].enabled);
    EXPECT_TRUE((*menu)[0].items[1].separator);
    EXPECT_EQ((*menu)[1].items[0].items[0].id, 40003);
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_FALSE(readMenu(std::span(whole).first(size))) << size;
    // Popups without end: refused before the stack is.
    std::vector<std::byte> deep(4, std::byte{0});
    for (int level = 0; level < 100000; ++level)
        for (const int byte : {0x10, 0, 0, 0})
            deep.push_back(static_cast<std::byte>(byte));
    EXPECT_FALSE(readMenu(deep));
}

struct Bars {
    HWND bands = nullptr;
    std::vector<UINT> heights;
    std::vector<int> commands;
};

Bars* gBars;

LRESULT barsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NOTIFY) {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        EXPECT_EQ(header->code, RBN_HEIGHTCHANGE);
        gBars->heights.push_back(CommandBands_Height(header->hwndFrom));
    }
    if (message == WM_COMMAND)
        gBars->commands.push_back(static_cast<int>(wParam));
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(BandsTest, BandsTellTheirHeightWhenBuiltAndWheneverTheWindowIsSized)
{
    addResource(4, 104, menuBytes());
    addResource(2, 106, std::vector<std::byte>(40));
    Bars bars;
    gBars = &bars;
    const HWND window = makeWindow(windowClass(u"Bars", barsProc));
    const HIMAGELIST images = ImageList_LoadImage(nullptr, MAKEINTRESOURCEW(106), 16, 0, CLR_DEFAULT, IMAGE_BITMAP, 0);
    const HWND bands = CommandBands_Create(nullptr, window, 1, RBS_BANDBORDERS, images);
    ASSERT_TRUE(bands);
    REBARBANDINFOW band = {};
    EXPECT_FALSE(CommandBands_AddBands(bands, nullptr, 1, &band));  // no size
    band.cbSize = sizeof band;
    band.fMask = RBBIM_STYLE | RBBIM_SIZE | RBBIM_IMAGE;
    band.fStyle = RBBS_NOGRIPPER;
    band.cx = 145;
    ASSERT_TRUE(CommandBands_AddBands(bands, nullptr, 1, &band));
    band.cx = 110;
    ASSERT_TRUE(CommandBands_AddBands(bands, nullptr, 1, &band));
    EXPECT_EQ(CommandBands_GetCommandBar(bands, 2), nullptr);
    const HWND toolbar = CommandBands_GetCommandBar(bands, 1);
    ASSERT_TRUE(CommandBar_InsertMenubar(CommandBands_GetCommandBar(bands, 0), nullptr, 104, 0));
    EXPECT_FALSE(CommandBar_InsertMenubar(toolbar, nullptr, 105, 0));
    EXPECT_EQ(CommandBar_AddBitmap(toolbar, nullptr, 106, 7, 0, 0), 0);
    EXPECT_EQ(CommandBar_AddBitmap(toolbar, nullptr, 107, 7, 0, 0), -1);
    const TBBUTTON buttons[] = {{0, 500, TBSTATE_ENABLED, 0, 0, 0}, {1, 501, 0, 0, 0, 0}};
    EXPECT_EQ(SendMessageW(toolbar, TB_ADDBUTTONSW, 2, reinterpret_cast<LPARAM>(buttons)), TRUE);
    EXPECT_FALSE(SendMessageW(toolbar, TB_ADDBUTTONSW, 5000, reinterpret_cast<LPARAM>(buttons)));
    CommandBands_Show(bands, TRUE);

    MoveWindow(window, 0, 0, 200, 100, TRUE);  // both bands no longer fit side by side
    MoveWindow(window, 0, 0, 640, 100, TRUE);
    EXPECT_EQ(bars.heights, (std::vector<UINT>{26, 52, 26}));
    EXPECT_EQ(SendMessageW(bands, RB_GETBARHEIGHT, 0, 0), 26);
    const std::vector<BandState> state = bandsOf(bands);
    ASSERT_EQ(state.size(), 2U);
    EXPECT_EQ(state[0].menu.size(), 2U);
    EXPECT_EQ(state[1].bitmapId, 106);
    EXPECT_EQ(state[1].rectangle.left, 145);
    EXPECT_FALSE(postCommand(window, 501));  // that button is disabled
    DestroyWindow(window);
    EXPECT_TRUE(bandsOf(bands).empty());
}

}  // namespace
}  // namespace platform::window::test
