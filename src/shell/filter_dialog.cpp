// filter_dialog.cpp - shows dialog 110, in which the user chooses which files the tree shows. Each control changes
// gOptions at once, and Cancel restores the filter from a saved copy.

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
constexpr int DateFrameId = 1020;
constexpr int ArchiveId = 1021;
constexpr int NewerThanId = 1024;  // the date picker has this id too, but is addressed only by its handle
constexpr int HiddenId = 1026;
constexpr int SystemId = 1027;
constexpr int ReadOnlyId = 1028;

constexpr int DatePickerHeight = 20;
constexpr int ExtensionChars = 4;  // with the NUL; a longer input is cut

struct AttributeBox {
    int id;
    DWORD bit;
};
constexpr AttributeBox AttributeBoxes[] = {{ArchiveId, 0x20}, {HiddenId, 0x02}, {SystemId, 0x04}, {ReadOnlyId, 0x01}};

// The size of the first half of gOptions.extensions. Only this half is loaded at the next start of the program.
constexpr std::size_t SavedExtensionBytes = 260;

// A copy of gOptions. The first opening of the dialog copies all of gOptions. Each later opening copies only the first
// SavedExtensionBytes bytes of gOptions.extensions.
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

// Hides the control DateFrameId of the dialog template and creates the date picker in its place.
void CreateDatePicker(HWND dialog)
{
    HWND frame = GetDlgItem(dialog, DateFrameId);
    RECT rectangle = {};
    GetWindowRect(frame, &rectangle);
    POINT topLeft = {rectangle.left, rectangle.top};
    POINT bottomRight = {rectangle.right, rectangle.bottom};
    ScreenToClient(dialog, &topLeft);
    ScreenToClient(dialog, &bottomRight);
    ShowWindow(frame, SW_HIDE);
    gDatePicker = CreateWindowExW(0, u"SysDateTimePick32", nullptr, WS_CHILD | WS_VISIBLE, topLeft.x, topLeft.y,
                                  bottomRight.x - topLeft.x, DatePickerHeight, dialog,
                                  reinterpret_cast<HMENU>(static_cast<INT_PTR>(NewerThanId)), nullptr, nullptr);
}

// Adds the extension at the end of the list, if there is room for its text, its NUL and the NUL that closes the list.
void AppendExtension(HWND dialog, const WCHAR* extension)
{
    std::size_t end = 0;
    ForEachExtension([&end](const WCHAR* each) {
        end += wcslen(each) + 1;
        return true;
    });
    const std::size_t newEnd = end + wcslen(extension) + 1;
    if (newEnd + 1 > ExtensionsChars)
        return;
    CopyText(gOptions.extensions + end, ExtensionsChars - end, extension);
    gOptions.extensions[newEnd] = 0;  // the options from the registry can have another character here
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

// Removes the selected row. Then writes gOptions.extensions again from the remaining rows.
void RemoveExtension(HWND dialog)
{
    const LRESULT row = SendDlgItemMessageW(dialog, ExtensionsId, LB_GETCURSEL, 0, 0);
    SendDlgItemMessageW(dialog, ExtensionsId, LB_DELETESTRING, static_cast<WPARAM>(row), 0);
    const LRESULT count = SendDlgItemMessageW(dialog, ExtensionsId, LB_GETCOUNT, 0, 0);
    std::memset(gOptions.extensions, 0, sizeof gOptions.extensions);
    WCHAR* next = gOptions.extensions;  // the rows fit, since they were read from this list
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

// Restores only the fields of the filter. Most of the copy is from the first opening of the dialog, and the other
// fields of gOptions can have changed since then. If they were restored too, an old value could turn the deletion of
// stored files on again.
void RestoreFilter()
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
        RestoreFilter();
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
