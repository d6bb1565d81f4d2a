#include "calendar_item.h"

#include "component_fields.h"
#include "moment_text.h"
#include "repetition.h"

#include "ce/personal_databases.h"

#include "database_formats/format_fault.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>

namespace database_formats {

namespace {

using namespace personal;

constexpr LONG MinutesOfDay = 1440;
constexpr std::int64_t StepsOfSecond = 10'000'000;

// Lines about the component itself, not about the appointment or task.
constexpr std::string_view IgnoredOfItems[] = {"DTSTAMP", "CREATED", "LAST-MODIFIED", "SEQUENCE", "PRODID", "VERSION"};

bool isMidnight(const Moment& moment)
{
    return moment.hour == 0 && moment.minute == 0 && moment.second == 0;
}

void addMoment(Component& component, std::string_view name, const Moment& moment, bool dateOnly)
{
    if (dateOnly)
        component.add(std::string(name), basicDate(moment), {{"VALUE", "DATE"}});
    else
        component.add(std::string(name), basicTime(moment));
}

void addStart(Component& event, std::span<const CEPROPVAL> appointment)
{
    const CEPROPVAL* start = propertyIn(appointment, Start);
    const CEPROPVAL* length = propertyIn(appointment, Minutes);
    const LONG minutes = length != nullptr ? length->val.lVal : 0;
    const auto moment = start != nullptr ? momentOf(start->val.filetime) : std::nullopt;
    if (moment)
        addMoment(event, "DTSTART", *moment, isMidnight(*moment) && minutes > 0 && minutes % MinutesOfDay == 0);
    if (minutes > 0)
        event.add("DURATION", durationText(minutes));
}

// Adds the repetition if the appointment has a start. A repetition has no meaning without a start.
void addRepetition(Component& event, std::span<const CEPROPVAL> appointment)
{
    const CEPROPVAL* start = propertyIn(appointment, Start);
    const CEPROPVAL* repetition = propertyIn(appointment, Repetition);
    if (start != nullptr && momentOf(start->val.filetime) && repetition != nullptr && repetition->val.ulVal != 0)
        event.add("RRULE", repetitionText(repetition->val.ulVal));
}

void addAlarm(Component& event, std::span<const CEPROPVAL> appointment)
{
    const CEPROPVAL* reminder = propertyIn(appointment, ReminderMinutes);
    if (reminder == nullptr || reminder->val.uiVal == 0)
        return;
    Component& alarm = event.parts.emplace_back(Component{"VALARM", {}, {}, 0});
    alarm.add("ACTION", "DISPLAY");
    alarm.add("DESCRIPTION", escaped(textIn(appointment, Subject)));
    alarm.add("TRIGGER", "-PT" + std::to_string(reminder->val.uiVal) + "M");
}

struct CalendarTime {
    FILETIME local{};
    Moment inFile;
    bool dateOnly = false;  // the file has a date without a time of day
};

// Reads the fields of an appointment or a task. `zones` are the zones of the calendar that contains the item.
class ItemFields : public ComponentFields {
public:
    ItemFields(const Component& item, const CalendarZones& zones, LeftOut& leftOut)
        : ComponentFields(item, leftOut), zones_(zones)
    {
    }
    const Zone* zoneNamed(const std::string& name) const { return zones_.named(name); }

private:
    const CalendarZones& zones_;
};

// Returns the moment as the host's local time. A moment without a zone is local time already. An unknown zone is
// ignored, and counted as left out under "TZID". Returns nothing for a time before 1601.
std::optional<FILETIME> localTime(const Moment& moment, const std::string& zoneName, ItemFields& fields)
{
    if (moment.minutesEast)
        return localTimeOf(moment);
    if (!moment.hasTime || zoneName.empty())
        return fileTimeOf(moment);
    if (const Zone* zone = fields.zoneNamed(zoneName))
        return localTimeOf(moment, *zone);
    fields.leaveOut("TZID");
    return fileTimeOf(moment);
}

// Calls `read` with the trimmed value of the line and returns its result. Returns nothing if `read` throws a
// FormatFault.
template <class Read>
auto valueOf(const ContentLine& line, Read read) -> std::optional<decltype(read(std::string_view()))>
{
    try {
        return read(trimmed(line.value));
    } catch (const FormatFault&) {
        return std::nullopt;
    }
}

// Returns the moment in the line. If the moment doesn't exist or is before 1601, counts the line as left out and
// returns nothing.
std::optional<CalendarTime> calendarTimeFrom(const ContentLine& line, ItemFields& fields)
{
    const auto moment = valueOf(line, momentFrom);
    const auto local = moment ? localTime(*moment, std::string(line.parameter("TZID")), fields) : std::nullopt;
    if (!local) {
        fields.leaveOut(line.name);
        return std::nullopt;
    }
    return CalendarTime{*local, *moment, !moment->hasTime};
}

// Returns the length of the appointment in minutes, or 0 if it is invalid. DURATION has priority over DTEND.
LONG takeMinutes(ItemFields& fields, const CalendarTime* start)
{
    const ContentLine* end = fields.take("DTEND");
    const ContentLine* duration = fields.take("DURATION");
    std::int64_t seconds = start != nullptr && start->dateOnly ? 86400 : 0;
    if (duration != nullptr)
        seconds = valueOf(*duration, durationFrom).value_or(-1);
    else if (end != nullptr && start != nullptr) {
        const auto time = calendarTimeFrom(*end, fields);
        seconds = time ? static_cast<std::int64_t>(stepsOf(time->local) - stepsOf(start->local)) / StepsOfSecond : 0;
    }
    const std::int64_t minutes = seconds / 60;
    if (seconds < 0 || minutes > std::numeric_limits<LONG>::max()) {
        fields.leaveOut(duration != nullptr ? "DURATION" : "DTEND");
        return 0;
    }
    if (end != nullptr && (start == nullptr || duration != nullptr))
        fields.leaveOut("DTEND");
    if (seconds % 60 != 0)
        fields.leaveOut(duration != nullptr ? "DURATION (seconds)" : "DTEND (seconds)");
    return static_cast<LONG>(minutes);
}

// Returns how many minutes before the start the alarm rings. Returns nothing for an alarm that an appointment can't
// hold, such as one after the start or one relative to the end.
std::optional<USHORT> minutesBefore(const ContentLine& trigger, const CalendarTime* start, ItemFields& fields)
{
    std::int64_t before = -1;
    if (inCapitals(trigger.parameter("VALUE")) == "DATE-TIME") {
        const auto time = calendarTimeFrom(trigger, fields);
        if (time && start != nullptr)
            before = static_cast<std::int64_t>(stepsOf(start->local) - stepsOf(time->local)) / StepsOfSecond;
    } else if (inCapitals(trigger.parameter("RELATED")) != "END") {
        before = -valueOf(trigger, durationFrom).value_or(0);
    }
    const bool fits = before > 0 && before % 60 == 0 && before / 60 <= std::numeric_limits<USHORT>::max();
    return fits ? std::optional(static_cast<USHORT>(before / 60)) : std::nullopt;
}

// Finds the alarm's first trigger that an appointment can hold. Returns how many minutes before the start this trigger
// is. Returns nothing if there is no such trigger.
std::optional<USHORT> minutesOf(const Component& alarm, const CalendarTime* start, ItemFields& fields)
{
    for (const ContentLine& line : alarm.lines) {
        if (line.name != "TRIGGER")
            continue;
        if (const auto minutes = line.fault.empty() ? minutesBefore(line, start, fields) : std::nullopt)
            return minutes;
    }
    return std::nullopt;
}

// Counts lines of `alarm` as left out, for example a sound, or a text that differs from the subject. Doesn't count
// TRIGGER, UID, ACTION:DISPLAY, a DESCRIPTION that repeats the subject, or a line with an empty value.
void leaveAlarm(const Component& alarm, const Component& event, ItemFields& fields)
{
    const auto isUsual = [&](const ContentLine& line) {
        const bool repeatsSubject =
            line.name == "DESCRIPTION" && std::ranges::any_of(event.lines, [&](const auto& own) {
                return own.name == "SUMMARY" && own.value == line.value;
            });
        return line.name == "TRIGGER" || line.name == "UID" || repeatsSubject ||
               (line.name == "ACTION" && inCapitals(trimmed(line.value)) == "DISPLAY");
    };
    for (const ContentLine& line : alarm.lines)
        if (!line.value.empty() && !isUsual(line))
            fields.leaveOut("VALARM " + line.name);
}

// Finds the first alarm that an appointment can hold. Returns how many minutes before the start it rings, or 0 if there
// is no such alarm. Counts all other parts of the event as left out.
USHORT takeReminder(const Component& event, ItemFields& fields, const CalendarTime* start)
{
    std::optional<USHORT> reminder;
    for (const Component& part : event.parts) {
        const auto minutes = part.name == "VALARM" && !reminder ? minutesOf(part, start, fields) : std::nullopt;
        if (minutes) {
            reminder = minutes;
            leaveAlarm(part, event, fields);
        } else
            fields.leaveOut(part.name);
    }
    return reminder.value_or(0);
}

ULONG takeRepetition(ItemFields& fields, const CalendarTime* start)
{
    const ContentLine* rule = fields.take("RRULE");
    if (rule == nullptr)
        return 0;
    const auto days = start != nullptr ? repetitionFrom(rule->value, start->inFile) : std::nullopt;
    if (!days) {
        fields.leaveOut("RRULE");
        return 0;
    }
    for (const std::string_view exception : {"EXDATE", "EXRULE"})
        fields.leaveOut(exception, std::string(exception) + " (exception to a repetition)");
    return *days;
}

std::optional<CalendarTime> takeTime(ItemFields& fields, std::string_view name)
{
    const ContentLine* line = fields.take(name);
    return line != nullptr ? calendarTimeFrom(*line, fields) : std::nullopt;
}

// iCalendar has the priorities 1 (highest) to 9 and 0 for none. A task has 1 (high), 2 (normal) and 3 (low).
SHORT priorityFrom(std::string_view value)
{
    int number = -1;
    const char* const end = value.data() + value.size();
    if (std::from_chars(value.data(), end, number).ptr != end || number < 0 || number > 9)
        throw FormatFault("a priority isn't a number from 0 to 9");
    return number == 0 ? SHORT{0} : number < 5 ? SHORT{1} : number == 5 ? SHORT{2} : SHORT{3};
}

void takePriority(ComponentFields& fields, Record& task)
{
    const ContentLine* line = fields.take("PRIORITY");
    const auto priority = line != nullptr ? valueOf(*line, priorityFrom) : SHORT{0};
    if (!priority)
        fields.leaveOut("PRIORITY");
    else if (*priority != 0)
        task.add(Priority, 0, {.iVal = *priority});
}

SHORT takeDone(ComponentFields& fields)
{
    const ContentLine* status = fields.take("STATUS");
    const ContentLine* percent = fields.take("PERCENT-COMPLETE");
    const ContentLine* completed = fields.take("COMPLETED");
    const std::string word = status != nullptr ? inCapitals(status->value) : std::string();
    const bool done = word == "COMPLETED" || (word.empty() && completed != nullptr) ||
                      (percent != nullptr && percent->value == "100");
    if (!word.empty() && word != "COMPLETED" && word != "NEEDS-ACTION")
        fields.leaveOut("STATUS");
    if (percent != nullptr && percent->value != "100" && percent->value != "0")
        fields.leaveOut("PERCENT-COMPLETE");
    if (completed != nullptr)
        fields.leaveOut("COMPLETED");  // a task has no time of completion
    return done ? SHORT{1} : SHORT{0};
}

}  // namespace

Component eventOf(std::span<const CEPROPVAL> appointment)
{
    Component event{"VEVENT", {}, {}, 0};
    addTextLine(event, "SUMMARY", textIn(appointment, Subject));
    addTextLine(event, "LOCATION", textIn(appointment, Place));
    addStart(event, appointment);
    addRepetition(event, appointment);
    addCategories(event, textIn(appointment, Categories));
    addNotes(event, "DESCRIPTION", appointment);
    addAlarm(event, appointment);
    return event;
}

Component todoOf(std::span<const CEPROPVAL> task)
{
    Component todo{"VTODO", {}, {}, 0};
    addTextLine(todo, "SUMMARY", textIn(task, Subject));
    addCategories(todo, textIn(task, Categories));
    const CEPROPVAL* due = propertyIn(task, Due);
    const auto moment = due != nullptr ? momentOf(due->val.filetime) : std::nullopt;
    if (moment)
        addMoment(todo, "DUE", *moment, isMidnight(*moment));
    const CEPROPVAL* priority = propertyIn(task, Priority);
    if (priority != nullptr && priority->val.iVal >= 1 && priority->val.iVal <= 3)
        todo.add("PRIORITY", std::to_string(4 * priority->val.iVal - 3));
    const CEPROPVAL* done = propertyIn(task, Done);
    todo.add("STATUS", done != nullptr && done->val.iVal != 0 ? "COMPLETED" : "NEEDS-ACTION");
    addNotes(todo, "DESCRIPTION", task);
    return todo;
}

Record appointmentFrom(const Component& event, const CalendarZones& zones, LeftOut& leftOut)
{
    Record appointment;
    ItemFields fields(event, zones, leftOut);
    fields.takeText(appointment, "SUMMARY", Subject);
    fields.takeText(appointment, "LOCATION", Place);
    const auto start = takeTime(fields, "DTSTART");
    const CalendarTime* from = start ? &*start : nullptr;
    if (start)
        appointment.add(Start, 0, {.filetime = start->local});
    appointment.add(Minutes, 0, {.lVal = takeMinutes(fields, from)});
    appointment.add(ReminderMinutes, 0, {.uiVal = takeReminder(event, fields, from)});
    appointment.add(Repetition, 0, {.ulVal = takeRepetition(fields, from)});
    fields.takeCategories(appointment);
    fields.takeNotes(appointment, "DESCRIPTION");
    fields.takeText(appointment, "UID", Identifier);
    fields.leaveRest(IgnoredOfItems);
    return appointment;
}

Record taskFrom(const Component& todo, const CalendarZones& zones, LeftOut& leftOut)
{
    Record task;
    ItemFields fields(todo, zones, leftOut);
    fields.takeText(task, "SUMMARY", Subject);
    fields.takeCategories(task);
    if (const auto due = takeTime(fields, "DUE"))
        task.add(Due, 0, {.filetime = due->local});
    takePriority(fields, task);
    task.add(Done, 0, {.iVal = takeDone(fields)});
    fields.takeNotes(task, "DESCRIPTION");
    fields.takeText(task, "UID", Identifier);
    for (const Component& part : todo.parts)
        fields.leaveOut(part.name);
    fields.leaveRest(IgnoredOfItems);
    return task;
}

}  // namespace database_formats
