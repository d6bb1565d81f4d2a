// The databases of a fresh device.
#include "demonstration_databases.h"

#include "ce/personal_databases.h"
#include "ce/time.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace platform::device {

namespace {

using namespace personal;

struct Moment {
    WORD year, month, day, hour, minute;
};

struct Contact {
    const WCHAR* lastName;
    const WCHAR* firstName;
    const WCHAR* company;
    const WCHAR* telephone;
    const WCHAR* mail;
    const WCHAR* town;
    const WCHAR* categories;
    Moment birthday;
    const char* notes;
};

constexpr Contact contacts[] = {
    {u"Okafor",
     u"Adaeze",
     u"Okafor Lettings",
     u"+00 555 0101",
     u"adaeze@okafor.example",
     u"Millbrook",
     u"Business",
     {},
     "landlord; mornings only"},
    {u"Lindqvist",
     u"Berta",
     u"",
     u"+00 555 0102",
     u"",
     u"Västervik",
     u"Family",
     {1941, 6, 3, 0, 0},
     "plums in September"},
    {u"Moreau",
     u"Inès",
     u"",
     u"+00 555 0103",
     u"ines.moreau@post.example",
     u"Nantes",
     u"Friends",
     {1978, 2, 17, 0, 0},
     ""},
    {u"Vähä",
     u"Robin",
     u"Boat yard Vähä",
     u"+00 555 0134",
     u"robin@boatyard.example",
     u"Harbour Row 4",
     u"Family",
     {1975, 11, 30, 0, 0},
     "that's me"},
    {u"Хоменко",
     u"Олена",
     u"",
     u"+00 555 0105",
     u"olena@post.example",
     u"Львів",
     u"Friends",
     {1982, 8, 24, 0, 0},
     "recipe for beetroot"},
    {u"Tanaka", u"Yuki", u"Tanaka Instruments", u"+00 555 0106", u"yuki@tanaka.example", u"横浜", u"Business", {}, ""},
    {u"O'Brien",
     u"Fionn",
     u"Sail loft \"Two Winds\"",
     u"+00 555 0107",
     u"loft@twowinds.example",
     u"Kinsale",
     u"Business;Boat",
     {},
     "spinnaker is paid\r\nmain sail isn't"},
    {u"García Núñez", u"Lucía", u"", u"+00 555 0108", u"", u"Cádiz", u"Friends;Boat", {1990, 1, 6, 0, 0}, ""},
    {u"Weiß",
     u"Jörg",
     u"Elektro Weiß",
     u"+00 555 0109",
     u"joerg@weiss.example",
     u"Fürth",
     u"Business",
     {},
     "fuse box, then the bill"},
    {u"Haddad", u"Samir", u"City library", u"+00 555 0110", u"desk@library.example", u"Millbrook", u"", {}, ""},
    {u"Petersen",
     u"Maja",
     u"",
     u"+00 555 0111",
     u"maja@post.example",
     u"Ærøskøbing",
     u"Family",
     {2009, 4, 12, 0, 0},
     ""},
    {u"Petersen", u"Nils", u"", u"+00 555 0111", u"", u"Ærøskøbing", u"Family", {2012, 9, 1, 0, 0}, "no nuts!"},
};

struct Appointment {
    const WCHAR* subject;
    const WCHAR* place;
    Moment start;
    LONG minutes;
    USHORT reminder;
    ULONG repetition;
    const char* notes;
};

constexpr Appointment appointments[] = {
    {u"Dentist", u"Market Square 2", {2025, 3, 11, 8, 30}, 45, 60, 0, "bring the X-ray"},
    {u"Choir", u"St Anne's", {2025, 3, 12, 19, 30}, 120, 30, 7, ""},
    {u"Look at the hall window", u"at home", {2025, 3, 14, 10, 0}, 30, 15, 0, "Ms Okafor sends somebody"},
    {u"Launch the boat", u"Slip 3", {2025, 4, 5, 7, 0}, 300, 1440, 0, "high water 7:40\r\nropes, fenders, Fionn"},
    {u"Maja's birthday", u"", {2025, 4, 12, 0, 0}, 1440, 2880, 365, ""},
    {u"Обід з Оленою", u"Harbour café", {2025, 4, 16, 12, 15}, 90, 30, 0, ""},
    {u"Parents' evening", u"School, room 12", {2025, 4, 24, 18, 0}, 60, 60, 0, ""},
    {u"土曜の練習", u"Sports hall", {2025, 4, 26, 10, 30}, 90, 0, 7, ""},
    {u"Train to Nantes", u"Platform 4", {2025, 5, 9, 7, 4}, 147, 45, 0, "IR 2112, car 6"},
    {u"Saturday with Inès", u"Nantes", {2025, 5, 10, 11, 0}, 540, 0, 0, "museum first"},
    {u"Tax return", u"", {2025, 5, 30, 9, 0}, 0, 4320, 365, ""},
};

struct Task {
    const WCHAR* subject;
    const WCHAR* categories;
    Moment due;
    SHORT priority;
    bool done;
    const char* notes;
};

constexpr Task tasks[] = {
    {u"Pay the electrician", u"Home", {2025, 3, 7, 0, 0}, 1, true, "invoice 2207"},
    {u"Renew library card", u"Home", {2025, 3, 31, 0, 0}, 2, false, ""},
    {u"Call Inès about Saturday", u"", {2025, 5, 6, 0, 0}, 1, false, ""},
    {u"Back up this thing", u"", {}, 1, false, "to the storage card, then check it"},
    {u"Order bean seeds", u"Garden", {2025, 3, 15, 0, 0}, 2, true, "3 x dwarf"},
    {u"Gravel for the path", u"Garden", {2025, 4, 20, 0, 0}, 3, false, "half a cubic metre"},
    {u"Sand the rudder", u"Boat", {2025, 3, 28, 0, 0}, 2, true, ""},
    {u"Second coat of varnish", u"Boat", {2025, 4, 1, 0, 0}, 1, false, "not below 10 °C"},
    {u"Flares: check the date", u"Boat", {2025, 4, 4, 0, 0}, 1, false, ""},
    {u"Bücher zurückbringen", u"Home", {2025, 4, 10, 0, 0}, 3, false, ""},
};

// One record on its way into a database. Empty texts and times that are not set are left out, as by hand.
class RecordWriter {
public:
    RecordWriter& add(CEPROPID id, const WCHAR* text)
    {
        if (*text != 0)
            addValue(id).lpwstr = const_cast<WCHAR*>(text);  // it is only read
        return *this;
    }
    RecordWriter& add(CEPROPID id, const Moment& moment)
    {
        if (moment.year == 0)
            return *this;
        const SYSTEMTIME time{moment.year, moment.month, 0, moment.day, moment.hour, moment.minute, 0, 0};
        FILETIME stored{};
        SystemTimeToFileTime(&time, &stored);
        addValue(id).filetime = stored;
        return *this;
    }
    RecordWriter& addBytes(CEPROPID id, std::string_view bytes)
    {
        if (!bytes.empty())
            addValue(id).blob = {static_cast<DWORD>(bytes.size()),
                                 reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
        return *this;
    }
    RecordWriter& addNumber(CEPROPID id, LONG number)
    {
        if (LOWORD(id) == CEVT_I2 || LOWORD(id) == CEVT_UI2)
            addValue(id).iVal = static_cast<SHORT>(number);
        else
            addValue(id).lVal = number;
        return *this;
    }
    [[nodiscard]] bool write(HANDLE database)
    {
        return CeWriteRecordProps(database, 0, static_cast<WORD>(properties_.size()), properties_.data()) != 0;
    }

private:
    CEVALUNION& addValue(CEPROPID id)
    {
        properties_.push_back({id, 0, 0, {}});
        return properties_.back().val;
    }

    std::vector<CEPROPVAL> properties_;
};

bool writeRecord(HANDLE database, const Contact& contact)
{
    return RecordWriter()
        .add(LastName, contact.lastName)
        .add(FirstName, contact.firstName)
        .add(Company, contact.company)
        .add(HomeTelephone, contact.telephone)
        .add(Mail, contact.mail)
        .add(Town, contact.town)
        .add(Categories, contact.categories)
        .add(Birthday, contact.birthday)
        .addBytes(Notes, contact.notes)
        .write(database);
}

bool writeRecord(HANDLE database, const Appointment& appointment)
{
    return RecordWriter()
        .add(Subject, appointment.subject)
        .add(Place, appointment.place)
        .add(Start, appointment.start)
        .addNumber(Minutes, appointment.minutes)
        .addNumber(ReminderMinutes, appointment.reminder)
        .addNumber(Repetition, static_cast<LONG>(appointment.repetition))
        .addBytes(Notes, appointment.notes)
        .write(database);
}

bool writeRecord(HANDLE database, const Task& task)
{
    return RecordWriter()
        .add(Subject, task.subject)
        .add(Categories, task.categories)
        .add(Due, task.due)
        .addNumber(Priority, task.priority)
        .addNumber(Done, task.done ? 1 : 0)
        .addBytes(Notes, task.notes)
        .write(database);
}

template <std::size_t Orders, class Record, std::size_t Count>
bool makeDatabase(const WCHAR* name, DWORD type, const SORTORDERSPEC (&orders)[Orders], const Record (&records)[Count])
{
    CEOID oid = CeCreateDatabase(name, type, static_cast<WORD>(Orders), orders);
    if (oid == 0)
        return false;
    const HANDLE database = CeOpenDatabase(&oid, nullptr, 0, 0, nullptr);
    if (database == INVALID_HANDLE_VALUE)
        return false;
    bool written = true;
    for (const Record& record : records)
        written = written && writeRecord(database, record);
    return CloseHandle(database) != 0 && written;
}

}  // namespace

bool fillDemonstrationDatabases()
{
    return makeDatabase(ContactsName, ContactsType, ContactsSort, contacts) &&
           makeDatabase(AppointmentsName, AppointmentsType, AppointmentsSort, appointments) &&
           makeDatabase(TasksName, TasksType, TasksSort, tasks);
}

}  // namespace platform::device
