// filter_dialog.cpp - dialog 110: which files the tree shows. It works on gOptions control by control; Cancel puts the
// filter back from a saved copy.

#include "dialogs.h"
#include "engine/options.h"

#include "ce/controls.h"
#include "ce/date_picker.h"
#include "ce/text.h"
#include "ce/time.h"

#include <cstring>

namespace {

constexpr int ExtensionFilterId = 1014;
constexpr int ExtensionsId = 1015;
constexpr int NewExtensionId = 1016;
constexpr int AddId = 1017;
constexpr int RemoveId = 1018;
constexpr int DatePlaceId = 1020;
constexpr int ArchiveId = 1021;
constexpr int NewerThanId = 1024;  // the date picker's id too: it is reached by its handle alone
constexpr int HiddenId = 1026;
constexpr int SystemId = 1027;
constexpr int ReadOnlyId = 1028;

constexpr int DatePickerHeight = 20;
constexpr int ExtensionChars = 4;  // with the NUL: the rest of what was typed is cut off

struct AttributeBox {
    int id;
    DWORD bit;
};
constexpr AttributeBox AttributeBoxes[] = {{ArchiveId, 0x20}, {HiddenId, 0x02}, {SystemId, 0x04}, {ReadOnlyId, 0x01}};

// Half of the list is what outlives the program, and what an opening of the dialog saves of it.
constexpr std::size_t SavedExtensionBytes = 260;

// As gOptions stood at the dialog's first opening, but for the list, which is as it stood at this one.
Options gFilterSnapshot;
bool gFilterSnapshotTaken;

HWND gDatePicker;

void DeriveHideByAttribute()
{
    gOptions.hideByAttribute = gOptions.hiddenAttributes != 0 ? 1 : 0;
}

void ShowDate(HWND picker)
{
    SYSTEMTIME date;
    const bool set = gOptions.newerThan.dwLowDateTime != 0 && gOptions.newerThan.dwHighDateTime != 0;
    if (!set || !FileTimeToSystemTime(&gOptions.newerThan, &date))
        GetLocalTime(&date);
    SendMessageW(picker, DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&date));
}

void TakeDate()
{
    SYSTEMTIME date = {};
    SendMessageW(gDatePicker, DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&date));
    SystemTimeToFileTime(&date, &gOptions.newerThan);
}

void ShowExtensions(HWND dialog)
{
    SendDlgItemMessageW(dialog, ExtensionsId, LB_RESETCONTENT, 0, 0);
    ForEachExtension([dialog](const WCHAR* extension) {
        SendDlgItemMessageW(dialog, ExtensionsId, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(extension));
        return true;
    });
}

// Brings the controls in line with gOptions.
void FilterDialogRefresh(HWND dialog, HWND picker)
{
    if (gOptions.extensionFilterOn)
        SetCheck(dialog, ExtensionFilterId, true);
    if (gOptions.newerThanOn)
        SetCheck(dialog, NewerThanId, true);
    ShowDate(picker);
    for (const int id : {ExtensionsId, AddId, RemoveId, NewExtensionId})
        EnableWindow(GetDlgItem(dialog, id), gOptions.extensionFilterOn != 0);
    EnableWindow(picker, gOptions.newerThanOn != 0);
    DeriveHideByAttribute();
    ShowExtensions(dialog);
    for (const AttributeBox& box : AttributeBoxes)
        SetCheck(dialog, box.id, (gOptions.hiddenAttributes & box.bit) != 0);
}

void CreateDatePicker(HWND dialog)
{
    HWND place = GetDlgItem(dialog, DatePlaceId);
    RECT rectangle = {};
    GetWindowRect(place, &rectangle);
    POINT topLeft = {rectangle.left, rectangle.top};
    POINT bottomRight = {rectangle.right, rectangle.bottom};
    ScreenToClient(dialog, &topLeft);
    ScreenToClient(dialog, &bottomRight);
    ShowWindow(place, SW_HIDE);
    gDatePicker = CreateWindowExW(0, u"SysDateTimePick32", nullptr, WS_CHILD | WS_VISIBLE, topLeft.x, topLeft.y,
                                  bottomRight.x - topLeft.x, DatePickerHeight, dialog,
                                  reinterpret_cast<HMENU>(static_cast<INT_PTR>(NewerThanId)), nullptr, nullptr);
}

// Appends, so that the list stands in the order in which it was typed. A list with no room left takes no more: the new
// text, its NUL and the NUL that closes the list must fit.
void AppendExtension(HWND dialog, const WCHAR* extension)
{
    std::size_t end = 0;
    ForEachExtension([&end](const WCHAR* each) {
        end += wcslen(each) + 1;
        return true;
    });
    const std::size_t behind = end + wcslen(extension) + 1;
    if (behind + 1 > ExtensionsChars)
        return;
    CopyText(gOptions.extensions + end, ExtensionsChars - end, extension);
    gOptions.extensions[behind] = 0;  // whatever stood behind the list as it was saved
    SetFocus(GetDlgItem(dialog, NewExtensionId));
    FilterDialogRefresh(dialog, gDatePicker);
}

void AddExtension(HWND dialog)
{
    WCHAR extension[ExtensionChars];
    GetDlgItemTextW(dialog, NewExtensionId, extension, ExtensionChars);
    const LRESULT row = SendDlgItemMessageW(dialog, ExtensionsId, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                            reinterpret_cast<LPARAM>(extension));
    if (row == LB_ERR)
        AppendExtension(dialog, extension);
    SetDlgItemTextW(dialog, NewExtensionId, u"");
}

// What remains is written back from the rows, so in their order.
void RemoveExtension(HWND dialog)
{
    const LRESULT row = SendDlgItemMessageW(dialog, ExtensionsId, LB_GETCURSEL, 0, 0);
    SendDlgItemMessageW(dialog, ExtensionsId, LB_DELETESTRING, static_cast<WPARAM>(row), 0);
    const LRESULT count = SendDlgItemMessageW(dialog, ExtensionsId, LB_GETCOUNT, 0, 0);
    std::memset(gOptions.extensions, 0, sizeof gOptions.extensions);
    WCHAR* next = gOptions.extensions;  // the rows fit, since they came from here
    for (LRESULT i = 0; i < count; i++)
        next += SendDlgItemMessageW(dialog, ExtensionsId, LB_GETTEXT, static_cast<WPARAM>(i),
                                    reinterpret_cast<LPARAM>(next)) +
                1;
    FilterDialogRefresh(dialog, gDatePicker);
}

void ClickAttribute(HWND dialog, const AttributeBox& box)
{
    if (IsChecked(dialog, box.id))
        gOptions.hiddenAttributes |= box.bit;
    else
        gOptions.hiddenAttributes ^= box.bit;
    DeriveHideByAttribute();
}

// The filter's own fields alone. The copy is as old as the first opening: what else the user has set since, such as
// that files are deleted once they are stored, must not come back with it.
void PutFilterBack()
{
    std::memcpy(gOptions.extensions, gFilterSnapshot.extensions, sizeof gOptions.extensions);
    gOptions.newerThan = gFilterSnapshot.newerThan;
    gOptions.newerThanOn = gFilterSnapshot.newerThanOn;
    gOptions.extensionFilterOn = gFilterSnapshot.extensionFilterOn;
    gOptions.hideByAttribute = gFilterSnapshot.hideByAttribute;
    gOptions.hiddenAttributes = gFilterSnapshot.hiddenAttributes;
}

void Command(HWND dialog, int id)
{
    switch (id) {
    case IDOK:
        TakeDate();
        EndDialog(dialog, 1);
        return;
    case IDCANCEL:
        PutFilterBack();
        EndDialog(dialog, 0);
        return;
    case ExtensionFilterId:
        gOptions.extensionFilterOn = IsChecked(dialog, ExtensionFilterId) ? 1 : 0;
        FilterDialogRefresh(dialog, gDatePicker);
        SetFocus(GetDlgItem(dialog, NewExtensionId));
        return;
    case NewerThanId:
        gOptions.newerThanOn = IsChecked(dialog, NewerThanId) ? 1 : 0;
        FilterDialogRefresh(dialog, gDatePicker);
        return;
    case AddId:
        AddExtension(dialog);
        return;
    case RemoveId:
        RemoveExtension(dialog);
        return;
    default:
        break;
    }
    for (const AttributeBox& box : AttributeBoxes) {
        if (box.id == id)
            ClickAttribute(dialog, box);
    }
}

void OpenFilter(HWND dialog)
{
    std::memcpy(gFilterSnapshot.extensions, gOptions.extensions, SavedExtensionBytes);
    CreateDatePicker(dialog);
    FilterDialogRefresh(dialog, gDatePicker);
}

}  // namespace

INT_PTR FilterDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (!gFilterSnapshotTaken) {
        gFilterSnapshot = gOptions;
        gFilterSnapshotTaken = true;
    }
    if (message == WM_INITDIALOG)
        OpenFilter(dialog);
    else if (message == WM_NOTIFY)
        TakeDate();
    else if (message == WM_COMMAND)
        Command(dialog, LOWORD(wParam));
    return FALSE;
}
