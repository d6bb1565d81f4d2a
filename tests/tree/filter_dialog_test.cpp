// The filter dialog from the program's own template. Cancel restores the extensions of the current opening, but the
// other filter options of the first opening in the process. So every test first opens the dialog with the default
// options.
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

#include <algorithm>
#include <cstring>
#include <string>

namespace {

using namespace platform::window;

enum Control : int {
    ExtensionFilter = 1014,
    Extensions = 1015,
    NewExtension = 1016,
    Add = 1017,
    Remove = 1018,
    NewerThan = 1024,
    Hidden = 1026,
};

std::string textOf(const SYSTEMTIME& date)
{
    return std::to_string(date.wYear) + "-" + std::to_string(date.wMonth) + "-" + std::to_string(date.wDay);
}

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
    void add(const WCHAR* extension) const
    {
        SetDlgItemTextW(dialog, NewExtension, extension);
        press(Add);
    }
    std::u16string rows() const
    {
        std::u16string all;
        for (const ListRow& row : listRows(GetDlgItem(dialog, Extensions)))
            all += row.text + u" ";
        return all;
    }
    // Returns the extensions in the options, with a blank after each.
    static std::u16string extensions()
    {
        const std::u16string_view field(gOptions.extensions, ExtensionsChars);
        std::u16string all(field.substr(0, field.find(std::u16string_view(u"\0", 2)) + 1));
        std::ranges::replace(all, u'\0', u' ');
        return all == u" " ? u"" : all;
    }
    void chooseDate(WORD year, WORD month, WORD day) const
    {
        SendMessageW(picker, InputDate, MAKELONG(month, year), day);
    }
    static std::string newerThan()
    {
        SYSTEMTIME date = {};
        const bool isSet = gOptions.newerThan.dwHighDateTime && FileTimeToSystemTime(&gOptions.newerThan, &date);
        return isSet ? textOf(date) : "never";
    }
    std::string shownDate() const
    {
        SYSTEMTIME date = {};
        EXPECT_TRUE(readDate(picker, date));
        return textOf(date);
    }

    HWND dialog = nullptr;
    HWND picker = nullptr;
};

TEST_F(FilterDialogTest, EachBoxChangesTheOptionsAtOnceAndIsShownAtTheNextOpening)
{
    for (const DWORD on : {1U, 0U, 1U}) {
        press(ExtensionFilter);
        EXPECT_EQ(gOptions.extensionFilterOn, on);
        for (const int id : {Extensions, NewExtension, Add, Remove})
            EXPECT_EQ(IsWindowEnabled(GetDlgItem(dialog, id)), static_cast<BOOL>(on)) << id;
    }
    for (const auto& [id, bit] : {std::pair{1021, 0x20U}, {1026, 2U}, {1027, 4U}, {1028, 1U}}) {
        press(id);
        EXPECT_EQ(gOptions.hiddenAttributes, bit);
        EXPECT_EQ(gOptions.hideByAttribute, 1U);
        open();
        EXPECT_TRUE(isChecked(ExtensionFilter) && isChecked(id)) << id;
        press(id);
        EXPECT_EQ(gOptions.hiddenAttributes, 0U);
        EXPECT_EQ(gOptions.hideByAttribute, 0U);
    }
}

TEST_F(FilterDialogTest, ExtensionsAreAppendedUntilTheFieldIsFullAndSortedByARemoval)
{
    press(ExtensionFilter);
    for (const WCHAR* each : {u"txt", u"TXT", u"jpeg", u"c", u""})
        add(each);
    EXPECT_EQ(extensions(), u"txt jpe c ");
    EXPECT_EQ(rows(), u"c jpe txt ");
    EXPECT_EQ(GetWindowTextLengthW(GetDlgItem(dialog, NewExtension)), 0);
    press(Remove);  // removes nothing, since no row is selected
    EXPECT_EQ(extensions(), u"c jpe txt ");
    for (int rows = 3; rows > 0; rows--) {
        SendDlgItemMessageW(dialog, Extensions, LB_SETCURSEL, 0, 0);
        press(Remove);
    }
    EXPECT_EQ(extensions(), u"");

    const FILETIME nextField = gOptions.newerThan;
    for (WCHAR first = u'a'; first <= u'z'; first++) {
        for (const WCHAR rest : {u'a', u'b', u'c'}) {
            const WCHAR extension[] = {first, rest, rest, 0};
            add(extension);
        }
    }
    EXPECT_EQ(extensions().size(), 64U * 4);
    add(u"z");  // one letter still fits
    add(u"y");
    EXPECT_EQ(extensions().size(), 64U * 4 + 2);
    EXPECT_EQ(gOptions.extensions[ExtensionsChars - 1], 0);
    EXPECT_EQ(std::memcmp(&nextField, &gOptions.newerThan, sizeof nextField), 0);
}

TEST_F(FilterDialogTest, DateFollowsThePickerAndStaysUnsetUntilItIsTouched)
{
    EXPECT_FALSE(IsWindowEnabled(picker));
    EXPECT_EQ(newerThan(), "never");
    press(NewerThan);
    EXPECT_EQ(gOptions.newerThanOn, 1U);
    EXPECT_TRUE(IsWindowEnabled(picker));
    EXPECT_EQ(newerThan(), "never");
    chooseDate(2020, 2, 29);
    EXPECT_EQ(newerThan(), "2020-2-29");
    for (const int id : {NewerThan, ExtensionFilter}) {  // neither changes the date
        press(id);
        EXPECT_EQ(shownDate(), "2020-2-29");
    }

    constexpr SYSTEMTIME Christmas = {2025, 12, 0, 24, 18, 0, 0, 0};
    SystemTimeToFileTime(&Christmas, &gOptions.newerThan);
    open();
    EXPECT_EQ(shownDate(), "2025-12-24");
    EXPECT_FALSE(isChecked(NewerThan));
    gOptions.newerThan = {};
    command(IDOK);  // OK stores the date even if the filter is off
    EXPECT_EQ(newerThan(), "2025-12-24");
}

TEST_F(FilterDialogTest, CancelRestoresTheExtensionsOfThisOpeningButTheOtherFilterOptionsOfTheFirst)
{
    press(Hidden);
    press(ExtensionFilter);
    press(NewerThan);
    chooseDate(2020, 2, 29);
    add(u"txt");
    command(IDCANCEL);
    EXPECT_EQ(gOptions.newerThanOn, 0U);
    EXPECT_EQ(newerThan(), "never");
    EXPECT_EQ(extensions(), u"");

    open();
    press(Hidden);
    press(ExtensionFilter);
    add(u"txt");
    command(IDOK);
    gOptions.restoreMode = RestoreModeSkip;
    gOptions.deleteBackedUp = gOptions.verifyBackup = gOptions.generateLog = 1;
    gOptions.maxBackupSizeMb = 9;
    gOptions.showRomFiles = 0;
    Options expected = gOptions;
    open();
    EXPECT_EQ(rows(), u"txt ");
    add(u"doc");
    command(IDCANCEL);
    EXPECT_EQ(extensions(), u"txt ");
    expected.hiddenAttributes = expected.hideByAttribute = expected.extensionFilterOn = 0;
    expected.newerThan = {};
    EXPECT_EQ(std::memcmp(&gOptions, &expected, sizeof expected), 0);
}

}  // namespace
