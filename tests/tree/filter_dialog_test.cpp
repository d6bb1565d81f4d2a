// The filter dialog on the template that the program has. Every test opens it first with the options that a start
// brings, so that what Cancel goes back to is the same whichever test came before.
#include "controls/date_display.h"
#include "controls/list_display.h"
#include "dialogs.h"
#include "engine/options.h"
#include "options_store.h"
#include "resource/resource_file.h"
#include "resources/embedded_resources.h"
#include "window/display.h"
#include "window/input.h"

#include "ce/controls.h"
#include "ce/resource.h"
#include "ce/time.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace platform::window;

constexpr SYSTEMTIME Christmas = {2025, 12, 0, 24, 18, 0, 0, 0};

class FilterDialogTest : public testing::Test {
protected:
    FilterDialogTest()
    {
        EXPECT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
        SetDefaultOptions();
        open();
    }
    ~FilterDialogTest() override { DestroyWindow(dialog); }

    void open()
    {
        if (dialog)
            DestroyWindow(dialog);
        constexpr WORD Filter = 110;
        HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(Filter), RT_DIALOG);
        ASSERT_NE(found, nullptr);
        dialog = CreateDialogIndirectParamW(nullptr, LoadResource(nullptr, found), nullptr, FilterDialogProc, 0);
        ASSERT_NE(dialog, nullptr);
        for (HWND child : childrenOf(dialog)) {
            WindowState state;
            if (readWindow(child, state) && state.kind == WindowKind::DatePicker)
                picker = child;
        }
    }
    void command(WORD id) const { SendMessageW(dialog, WM_COMMAND, id, 0); }
    void press(int id) const { SendDlgItemMessageW(dialog, id, BM_CLICK, 0, 0); }
    bool isChecked(int id) const { return SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0) == 1; }
    bool isEnabled(int id) const { return IsWindowEnabled(GetDlgItem(dialog, id)); }
    void add(const WCHAR* extension) const
    {
        SetDlgItemTextW(dialog, 1016, extension);
        press(1017);
    }
    std::string rows() const
    {
        std::string all;
        for (const ListRow& row : listRows(GetDlgItem(dialog, 1015)))
            all += (all.empty() ? "" : " ") + std::string(row.text.begin(), row.text.end());
        return all;
    }
    static std::string extensions()
    {
        std::string all;
        for (const WCHAR* at = gOptions.extensions; *at; at++) {
            all += all.empty() ? "" : " ";
            for (; *at; at++)
                all += static_cast<char>(*at);
        }
        return all;
    }
    void chooseDate(WORD year, WORD month, WORD day) const
    {
        SendMessageW(picker, InputDate, MAKELONG(month, year), day);
    }
    static std::string newerThan()
    {
        SYSTEMTIME date = {};
        if (!gOptions.newerThan.dwHighDateTime || !FileTimeToSystemTime(&gOptions.newerThan, &date))
            return "never";
        return std::to_string(date.wYear) + "-" + std::to_string(date.wMonth) + "-" + std::to_string(date.wDay);
    }
    std::string shownDate() const
    {
        SYSTEMTIME date = {};
        EXPECT_TRUE(readDate(picker, date));
        return std::to_string(date.wYear) + "-" + std::to_string(date.wMonth) + "-" + std::to_string(date.wDay);
    }

    HWND dialog = nullptr;
    HWND picker = nullptr;
};

TEST_F(FilterDialogTest, EachControlChangesTheOptionsAtOnce)
{
    EXPECT_FALSE(isEnabled(1015) || isEnabled(1016) || isEnabled(1017) || isEnabled(1018));
    press(1014);
    EXPECT_EQ(gOptions.extensionFilterOn, 1U);
    EXPECT_TRUE(isEnabled(1015) && isEnabled(1016) && isEnabled(1017) && isEnabled(1018));
    press(1014);
    EXPECT_EQ(gOptions.extensionFilterOn, 0U);
    EXPECT_FALSE(isEnabled(1016));

    for (const auto& [id, bit] : {std::pair{1021, 0x20U}, {1026, 2U}, {1027, 4U}, {1028, 1U}}) {
        press(id);
        EXPECT_EQ(gOptions.hiddenAttributes, bit);
        EXPECT_EQ(gOptions.hideByAttribute, 1U);
        press(id);
        EXPECT_EQ(gOptions.hiddenAttributes, 0U);
        EXPECT_EQ(gOptions.hideByAttribute, 0U);
    }
}

TEST_F(FilterDialogTest, ExtensionsAreAppendedAndSortedByARemoval)
{
    press(1014);
    for (const WCHAR* each : {u"txt", u"TXT", u"jpeg", u"c", u""})
        add(each);
    EXPECT_EQ(extensions(), "txt jpe c");
    EXPECT_EQ(rows(), "c jpe txt");
    WCHAR text[10];
    EXPECT_EQ(GetDlgItemTextW(dialog, 1016, text, 10), 0);
    press(1018);  // no row is selected: nothing goes
    EXPECT_EQ(extensions(), "c jpe txt");
    SendDlgItemMessageW(dialog, 1015, LB_SETCURSEL, 1, 0);
    press(1018);
    EXPECT_EQ(extensions(), "c txt");
    EXPECT_EQ(rows(), "c txt");
}

TEST_F(FilterDialogTest, ListThatIsFullTakesNoMore)
{
    press(1014);
    FILETIME guard = gOptions.newerThan;
    for (WCHAR first = u'a'; first <= u'z'; first++) {
        for (const WCHAR* rest : {u"aa", u"bb", u"cc"}) {
            const WCHAR extension[] = {first, rest[0], rest[1], 0};
            add(extension);
        }
    }
    EXPECT_EQ(extensions().size(), 64U * 4 - 1);
    EXPECT_EQ(std::memcmp(&guard, &gOptions.newerThan, sizeof guard), 0);
    EXPECT_EQ(gOptions.extensions[ExtensionsChars - 1], 0);
    add(u"z");  // one letter still fits
    EXPECT_EQ(extensions().size(), 64U * 4 + 1);
    add(u"y");
    EXPECT_EQ(extensions().size(), 64U * 4 + 1);
}

TEST_F(FilterDialogTest, DateFollowsThePickerAndStaysUnsetUntilItIsTouched)
{
    EXPECT_FALSE(IsWindowEnabled(picker));
    EXPECT_EQ(newerThan(), "never");
    press(1024);
    EXPECT_EQ(gOptions.newerThanOn, 1U);
    EXPECT_TRUE(IsWindowEnabled(picker));
    EXPECT_EQ(newerThan(), "never");
    chooseDate(2020, 2, 29);
    EXPECT_EQ(newerThan(), "2020-2-29");
    press(1024);  // doesn't touch the date
    EXPECT_EQ(shownDate(), "2020-2-29");
    press(1014);
    EXPECT_EQ(shownDate(), "2020-2-29");

    SystemTimeToFileTime(&Christmas, &gOptions.newerThan);
    open();
    EXPECT_EQ(shownDate(), "2025-12-24");
    EXPECT_FALSE(isChecked(1024));
    gOptions.newerThan = {};
    command(IDOK);  // with the filter off
    EXPECT_EQ(newerThan(), "2025-12-24");
}

TEST_F(FilterDialogTest, PickerStandsWhereTheTemplateKeepsItsPlace)
{
    WindowState place;
    WindowState state;
    ASSERT_TRUE(readWindow(GetDlgItem(dialog, 1020), place) && readWindow(picker, state));
    EXPECT_FALSE(place.visible);
    EXPECT_EQ(state.rectangle.left, place.rectangle.left);
    EXPECT_EQ(state.rectangle.top, place.rectangle.top);
    EXPECT_EQ(state.rectangle.right, place.rectangle.right);
    EXPECT_EQ(state.rectangle.bottom - state.rectangle.top, 20);
}

TEST_F(FilterDialogTest, CancelGoesBackToTheFirstOpeningButForTheListAndWhatIsNoFilter)
{
    press(1026);
    press(1014);
    press(1024);
    chooseDate(2020, 2, 29);
    add(u"txt");
    command(IDCANCEL);
    EXPECT_EQ(gOptions.hiddenAttributes, 0U);
    EXPECT_EQ(gOptions.hideByAttribute, 0U);
    EXPECT_EQ(gOptions.extensionFilterOn, 0U);
    EXPECT_EQ(gOptions.newerThanOn, 0U);
    EXPECT_EQ(newerThan(), "never");
    EXPECT_EQ(extensions(), "");

    open();
    press(1026);
    press(1014);
    add(u"txt");
    command(IDOK);
    Options others = gOptions;
    others.restoreMode = RestoreModeSkip;
    others.deleteBackedUp = others.verifyBackup = others.generateLog = 1;
    others.maxBackupSizeMb = 9;
    others.showRomFiles = 0;
    gOptions = others;
    open();
    EXPECT_TRUE(isChecked(1014));
    EXPECT_EQ(rows(), "txt");
    add(u"doc");
    command(IDCANCEL);
    EXPECT_EQ(extensions(), "txt");  // as at this opening
    others.hiddenAttributes = others.hideByAttribute = others.extensionFilterOn = 0;
    others.newerThan = {};
    EXPECT_EQ(std::memcmp(&gOptions, &others, sizeof others), 0);
}

}  // namespace
