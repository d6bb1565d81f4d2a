// Dialog templates and menus, sound and damaged, and the command bands that show a menu.
#include "test_user.h"

#include "dialog_template.h"
#include "menu_resource.h"

#include "ce/command_bands.h"

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

TEST(DialogTemplateTest, DamagedTemplateIsRefusedOrOpensAsAWhole)
{
    for (const bool extended : {false, true})
        for (const DWORD style : {WithFont, WithoutFont}) {
            const std::u16string whole = templateWords(u"T", Controls, extended, style);
            const auto bytes = std::as_bytes(std::span(whole));
            for (std::size_t size = 0; size < bytes.size(); ++size) {
                // A copy of exactly this size, so that a sanitizer detects a read past its end.
                const std::vector<std::byte> cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
                ASSERT_FALSE(readDialogTemplate(cut)) << size;
            }
            for (std::size_t at = 0; at < whole.size(); ++at)
                for (const char16_t value : u"\0\1\x7FFF\x8000\xFFFF"s) {
                    std::u16string damaged = whole;
                    damaged[at] = value;
                    const auto dialog = readTemplate(damaged);
                    ASSERT_TRUE(!dialog || dialog->controls.size() <= Controls.size());
                    if (at % 4 == 0 && style == WithFont)
                        DestroyWindow(CreateDialogIndirectParamW(
                            nullptr, addResource(5, 9999, damaged), nullptr,
                            [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0));
                }
        }
}

// An entry of a menu consists of flags, a command unless it is a popup, and a text.
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
    // A recursive reader would overflow its stack with this number of levels.
    std::u16string deep = u"\0\0"s;
    for (int level = 0; level < 100000; ++level)
        deep += u"\x10\0"s;
    EXPECT_FALSE(readMenu(std::as_bytes(std::span(deep))));
}

std::vector<UINT>* gHeights;

LRESULT barsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NOTIFY)
        gHeights->push_back(CommandBands_Height(reinterpret_cast<const NMHDR*>(lParam)->hwndFrom));
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(BandsTest, BandsNotifyTheirHeightWhenBuiltAndWheneverTheWindowIsSized)
{
    addResource(4, 104, Menu);
    std::vector<UINT> heights;
    gHeights = &heights;
    const HWND window = makeWindow(windowClass(u"Bars", barsProc));
    const HWND bands = CommandBands_Create(nullptr, window, 1, RBS_BANDBORDERS, nullptr);
    REBARBANDINFOW band = {};
    band.cbSize = sizeof band;
    band.fMask = RBBIM_SIZE;
    for (const UINT width : {145U, 110U}) {
        band.cx = width;
        ASSERT_TRUE(CommandBands_AddBands(bands, nullptr, 1, &band));
    }
    ASSERT_TRUE(CommandBar_InsertMenubar(CommandBands_GetCommandBar(bands, 0), nullptr, 104, 0));
    CommandBands_Show(bands, TRUE);
    MoveWindow(window, 0, 0, 200, 100, TRUE);  // now the two bands don't fit side by side
    MoveWindow(window, 0, 0, 640, 100, TRUE);
    EXPECT_EQ(heights, (std::vector<UINT>{26, 52, 26}));
    DestroyWindow(window);
}

}  // namespace
}  // namespace platform::window::test
