// ce/time.h - local time, file times, and the one locale setting that the program asks for.
#pragma once

#include "ce/error.h"
#include "ce/types.h"

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;      // 1 to 12
    WORD wDayOfWeek;  // 0 is Sunday
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x800;
inline constexpr DWORD LOCALE_SSHORTDATE = 0x1F;

// The host's local time.
void GetLocalTime(SYSTEMTIME* now);

// Converts without regard to time zones, and ignores wDayOfWeek. If the date or the time of day doesn't exist, or if
// the year is before 1601 or after 30827, returns 0 and sets error 87.
BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime);

// Converts without regard to time zones. If the file time is 0x8000000000000000 or more, returns 0 and sets error 87.
BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* time);

// -1 if the first time is earlier, 0 if both are equal, 1 if the first time is later.
LONG CompareFileTime(const FILETIME* first, const FILETIME* second);

// Gets the setting as text. Returns the length of the text in characters with the NUL. With `characters` 0 the call
// only returns this length. The only setting is LOCALE_SSHORTDATE of LOCALE_SYSTEM_DEFAULT. It looks like "M/d/yy",
// "dd/MM/yyyy" or "yyyy-MM-dd" and follows the host's LC_TIME. Returns 0 on failure. The last error is 122 if `out` is
// too small, 1004 if `setting` contains flags, and 87 for another locale or setting or an invalid buffer.
int GetLocaleInfoW(LCID locale, DWORD setting, WCHAR* out, int characters);
