// ce/personal_databases.h - declares the names, types and properties of the three databases with personal data of the
// device's owner: contacts, appointments and tasks.
#pragma once

#include "ce/store.h"

namespace personal {

inline constexpr DWORD ContactsType = 24;
inline constexpr DWORD AppointmentsType = 25;
inline constexpr DWORD TasksType = 26;

inline constexpr WCHAR ContactsName[] = u"Contacts Database";
inline constexpr WCHAR AppointmentsName[] = u"Appointments Database";
inline constexpr WCHAR TasksName[] = u"Tasks Database";

constexpr CEPROPID property(DWORD number, WORD type)
{
    return (number << 16) | type;
}

// The numbers of the properties. A property means the same in each database. Times are local times of the device,
// without a zone.
inline constexpr CEPROPID Subject = property(0x0037, CEVT_LPWSTR);
inline constexpr CEPROPID Notes = property(0x4005, CEVT_BLOB);         // UTF-8, lines end with CR LF
inline constexpr CEPROPID Categories = property(0x4004, CEVT_LPWSTR);  // separated by semicolons

inline constexpr CEPROPID Identifier = property(0x40F1, CEVT_LPWSTR);  // the UID in vCard and iCalendar

inline constexpr CEPROPID LastName = property(0x3A11, CEVT_LPWSTR);
inline constexpr CEPROPID FirstName = property(0x3A06, CEVT_LPWSTR);
inline constexpr CEPROPID Company = property(0x3A16, CEVT_LPWSTR);
inline constexpr CEPROPID HomeTelephone = property(0x3A09, CEVT_LPWSTR);
inline constexpr CEPROPID Mail = property(0x4083, CEVT_LPWSTR);
inline constexpr CEPROPID Town = property(0x4041, CEVT_LPWSTR);
inline constexpr CEPROPID Birthday = property(0x4042, CEVT_FILETIME);

inline constexpr CEPROPID Start = property(0x4002, CEVT_FILETIME);
inline constexpr CEPROPID Minutes = property(0x4015, CEVT_I4);
inline constexpr CEPROPID Place = property(0x4208, CEVT_LPWSTR);
inline constexpr CEPROPID ReminderMinutes = property(0x4501, CEVT_UI2);  // minutes before the start; 0 for no reminder
inline constexpr CEPROPID Repetition = property(0x4016, CEVT_UI4);       // period in days; 0: not repeated

inline constexpr CEPROPID Due = property(0x4104, CEVT_FILETIME);
inline constexpr CEPROPID Done = property(0x4109, CEVT_I2);      // 0 or 1
inline constexpr CEPROPID Priority = property(0x0026, CEVT_I2);  // 1 high, 2 normal, 3 low

inline constexpr SORTORDERSPEC ContactsSort[] = {{LastName, CEDB_SORT_CASEINSENSITIVE},
                                                 {Company, CEDB_SORT_CASEINSENSITIVE}};
inline constexpr SORTORDERSPEC AppointmentsSort[] = {{Start, 0}};
inline constexpr SORTORDERSPEC TasksSort[] = {{Due, CEDB_SORT_UNKNOWNFIRST}, {Priority, CEDB_SORT_DESCENDING}};

}  // namespace personal
