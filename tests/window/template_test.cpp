// Damaged templates and menus, and the command bands that show a menu.
#include "test_user.h"

#include "dialog_template.h"
#include "menu_resource.h"

#include "ce/command_bands.h"
#include "ce/resource.h"
#include "controls/bands_display.h"

#include <gtest/gtest.h>

#include <span>

namespace platform::window::test {
namespace {

using namespace std::string_literals;

constexpr DWORD WithFont = 0x80c808c0;
constexpr DWORD WithoutFont = 0x80c80880;

const std::vector<TestControl> Controls = {
    {u"Static", u"Label", -1, 0},
    {u"msctls_progress32", u"", 1001, 0},
    {u"LISTBOX", u"", 40003, LBS_SORT},
};

auto readTemplate(const std::u16string& words)
{
    return readDialogTemplate(std::as_bytes(std::span(words)));
}

TEST(DialogTemplateTest, BothFormatsGiveTheSameDialog)
{
    for (const bool extended : {false, true}) {
        const auto dialog = readTemplate(templateWords(u"Title", Controls, extended, WithFont));
        ASSERT_TRUE(dialog);
        EXPECT_EQ(dialog->title, u"Title");
        EXPECT_EQ(dialog->style, WithFont);
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
        for (const DWORD style : {WithFont, WithoutFont}) {
            const std::u16string words = templateWords(u"T", Controls, extended, style);
            const auto whole = std::as_bytes(std::span(words));
            for (std::size_t size = 0; size < whole.size(); ++size) {
                // A copy of that size, so that a sanitizer sees a read past its end.
                const std::vector<std::byte> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
                ASSERT_FALSE(readDialogTemplate(cut)) << size;
            }
        }
}

TEST(DialogTemplateTest, AnyWordOfATemplateMayHaveAnyValue)
{
    for (const bool extended : {false, true}) {
        const std::u16string whole = templateWords(u"T", Controls, extended, WithFont);
        for (std::size_t at = 0; at < whole.size(); ++at)
            for (const unsigned value : {0U, 1U, 0x7FFFU, 0x8000U, 0xFFFFU}) {
                std::u16string damaged = whole;
                damaged[at] = static_cast<char16_t>(value);
                const auto dialog = readTemplate(damaged);
                ASSERT_TRUE(!dialog || dialog->controls.size() <= Controls.size());
                // What can be read can be opened, or is refused as a whole.
                const HWND window = CreateDialogIndirectParamW(
                    nullptr, at % 4 == 0 ? addResource(5, 9999, damaged) : nullptr, nullptr,
                    [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
                if (window)
                    DestroyWindow(window);
            }
    }
}

// Each entry has its flags, its command unless it is a popup, and its text.
constexpr char16_t Popup = 0x10;
constexpr char16_t Last = 0x80;

std::u16string popup(const char16_t* text, char16_t flags = 0)
{
    return std::u16string{static_cast<char16_t>(Popup | flags)} + text + u'\0';
}

std::u16string command(char16_t id, const char16_t* text, char16_t flags = 0)
{
    return std::u16string{flags, id} + text + u'\0';
}

const std::u16string Menu = u"\0\0"s + popup(u"File") + command(40010, u"Filter...", 1) + command(0, u"") +
                            command(40002, u"Exit", Last) + popup(u"Operations", Last) + popup(u"Backup", Last) +
                            command(40003, u"Full...", Last);

TEST(MenuTest, NestedMenuIsReadWholeOrNotAtAll)
{
    const auto whole = std::as_bytes(std::span(Menu));
    const auto menu = readMenu(whole);
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->size(), 2U);
    EXPECT_FALSE((*menu)[0].items[0].enabled);
    EXPECT_TRUE((*menu)[0].items[1].separator);
    EXPECT_EQ((*menu)[1].items[0].items[0].id, 40003);
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_FALSE(readMenu(whole.first(size))) << size;
    // So many levels that reading them by recursion would overflow the stack.
    std::u16string deep = u"\0\0"s;
    for (int level = 0; level < 100000; ++level)
        deep += u"\x10\0"s;
    EXPECT_FALSE(readMenu(std::as_bytes(std::span(deep))));
}

std::vector<UINT>* gHeights;

LRESULT barsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NOTIFY) {
        const auto* header = reinterpret_cast<const NMHDR*>(lParam);
        EXPECT_EQ(header->code, RBN_HEIGHTCHANGE);
        gHeights->push_back(CommandBands_Height(header->hwndFrom));
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(BandsTest, BandsNotifyTheirHeightWhenBuiltAndWheneverTheWindowIsSized)
{
    addResource(4, 104, Menu);
    addResource(2, 106, std::u16string(20, u'\0'));
    std::vector<UINT> heights;
    gHeights = &heights;
    const HWND window = makeWindow(windowClass(u"Bars", barsProc));
    const HIMAGELIST images = ImageList_LoadImage(nullptr, MAKEINTRESOURCEW(106), 16, 0, CLR_DEFAULT, IMAGE_BITMAP, 0);
    const HWND bands = CommandBands_Create(nullptr, window, 1, RBS_BANDBORDERS, images);
    ASSERT_TRUE(bands);
    REBARBANDINFOW band = {};
    EXPECT_FALSE(CommandBands_AddBands(bands, nullptr, 1, &band));  // no size
    band.cbSize = sizeof band;
    band.fMask = RBBIM_STYLE | RBBIM_SIZE | RBBIM_IMAGE;
    band.fStyle = RBBS_NOGRIPPER;
    for (const UINT width : {145U, 110U}) {
        band.cx = width;
        ASSERT_TRUE(CommandBands_AddBands(bands, nullptr, 1, &band));
    }
    EXPECT_EQ(CommandBands_GetCommandBar(bands, 2), nullptr);
    const HWND toolbar = CommandBands_GetCommandBar(bands, 1);
    ASSERT_TRUE(CommandBar_InsertMenubar(CommandBands_GetCommandBar(bands, 0), nullptr, 104, 0));
    EXPECT_FALSE(CommandBar_InsertMenubar(toolbar, nullptr, 105, 0));
    EXPECT_EQ(CommandBar_AddBitmap(toolbar, nullptr, 106, 7, 0, 0), 0);
    EXPECT_EQ(CommandBar_AddBitmap(toolbar, nullptr, 107, 7, 0, 0), -1);
    const TBBUTTON buttons[] = {{0, 500, TBSTATE_ENABLED, 0, 0, 0}, {1, 501, 0, 0, 0, 0}};
    EXPECT_EQ(send(toolbar, TB_ADDBUTTONSW, 2, buttons), TRUE);
    EXPECT_FALSE(send(toolbar, TB_ADDBUTTONSW, 5000, buttons));
    CommandBands_Show(bands, TRUE);

    MoveWindow(window, 0, 0, 200, 100, TRUE);  // both bands no longer fit side by side
    MoveWindow(window, 0, 0, 640, 100, TRUE);
    EXPECT_EQ(heights, (std::vector<UINT>{26, 52, 26}));
    EXPECT_EQ(send(bands, RB_GETBARHEIGHT), 26);
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
