// ce/date_picker.h - the date picker "SysDateTimePick32". After each change by the user it sends WM_NOTIFY with
// DTN_DATETIMECHANGE; setting a date by message sends nothing.
#pragma once

#include "ce/controls.h"
#include "ce/time.h"

// wParam 0, lParam a SYSTEMTIME*. Gets the date that the picker shows. The time of day is the one that
// DTM_SETSYSTEMTIME has set. Returns GDT_VALID.
inline constexpr UINT DTM_GETSYSTEMTIME = 0x1001;
// wParam GDT_VALID, lParam a SYSTEMTIME*, whose wDayOfWeek is ignored. Returns nonzero, 0 for a date that doesn't
// exist.
inline constexpr UINT DTM_SETSYSTEMTIME = 0x1002;
inline constexpr WPARAM GDT_VALID = 0;
inline constexpr UINT DTN_DATETIMECHANGE = static_cast<UINT>(-759);

struct NMDATETIMECHANGE {
    NMHDR nmhdr;
    DWORD dwFlags;  // GDT_VALID
    SYSTEMTIME st;
};
