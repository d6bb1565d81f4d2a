// ce/date_picker.h - the date picker control "SysDateTimePick32". When the user changes the date, the control sends
// WM_NOTIFY with DTN_DATETIMECHANGE. A message that sets the date sends no notification.
#pragma once

#include "ce/controls.h"
#include "ce/time.h"

// wParam 0, lParam a SYSTEMTIME*. Gets the date that the picker shows. The time of day is that of the last
// DTM_SETSYSTEMTIME. If there was none, it is the time at which the picker was made. Returns GDT_VALID.
inline constexpr UINT DTM_GETSYSTEMTIME = 0x1001;
// wParam GDT_VALID, lParam a SYSTEMTIME*, whose wDayOfWeek is ignored. Returns nonzero on success, 0 for another wParam
// or for a date that SystemTimeToFileTime refuses.
inline constexpr UINT DTM_SETSYSTEMTIME = 0x1002;
inline constexpr WPARAM GDT_VALID = 0;
inline constexpr UINT DTN_DATETIMECHANGE = static_cast<UINT>(-759);

struct NMDATETIMECHANGE {
    NMHDR nmhdr;
    DWORD dwFlags;  // GDT_VALID
    SYSTEMTIME st;
};
