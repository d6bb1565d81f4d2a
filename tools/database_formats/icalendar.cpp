#include "icalendar.h"

#include "calendar_item.h"
#include "component.h"
#include "content_line.h"
#include "written_text.h"

#include "ce/personal_databases.h"

#include <algorithm>
#include <iterator>

namespace database_formats {

namespace {

// DTSTAMP is required, but a record has no time of its last change. With a fixed time, an unchanged record is the same
// text in every export.
constexpr const char* NoTime = "19700101T000000Z";

DatabaseHead appointmentsHead()
{
    return {personal::AppointmentsName,
            personal::AppointmentsType,
            {std::begin(personal::AppointmentsSort), std::end(personal::AppointmentsSort)}};
}

DatabaseHead tasksHead()
{
    return {personal::TasksName, personal::TasksType, {std::begin(personal::TasksSort), std::end(personal::TasksSort)}};
}

Reading readingOf(bool task, const CalendarZones& zones)
{
    return [task, &zones](const Component& item, LeftOut& leftOut) {
        return task ? taskFrom(item, zones, leftOut) : appointmentFrom(item, zones, leftOut);
    };
}

// Reads the file to its end for the zones that it defines, because a definition may follow the events that use it. Then
// goes back to the beginning of the file. Definitions that can't be used are counted as left out.
void readZones(LineReader& lines, CalendarZones& zones, LeftOut& leftOut)
{
    ComponentReader items(lines, "VCALENDAR");
    while (const auto item = items.next())
        if (item->name == "VTIMEZONE" && !zones.define(*item))
            leftOut.add("VTIMEZONE");
    lines.restart();
}

// Takes the calendar's own lines that were read since the last call, for example its name or colour. Counts these lines
// as left out, except lines without a value and the lines about the file. Returns the METHOD, or an empty text if these
// lines have none.
std::string takeCalendarLines(ComponentReader& items, LeftOut& leftOut)
{
    constexpr std::string_view AboutTheFile[] = {"VERSION", "PRODID", "CALSCALE", "METHOD"};
    std::string method;
    for (const ContentLine& line : items.takeContainerLines()) {
        if (line.name == "METHOD")
            method = inCapitals(trimmed(line.value));
        if (!line.value.empty() && std::ranges::find(AboutTheFile, line.name) == std::end(AboutTheFile))
            leftOut.add(line.name);
    }
    return method;
}

// Returns the name under which an item is counted as left out, or an empty text for an item that becomes a record.
// Three kinds of items must not become records: a cancelled item, an answer to an invitation, and an item that replaces
// a single day of a repetition. The record of the repetition already includes that day.
std::string leftOutName(const Component& item, const std::string& method)
{
    if (method == "CANCEL" || method == "REPLY")
        return item.name + " (METHOD:" + method + ")";
    for (const ContentLine& line : item.lines)
        if (line.name == "RECURRENCE-ID")
            return item.name + " (exception to a repetition)";
    for (const ContentLine& line : item.lines)
        if (line.name == "STATUS" && inCapitals(line.value) == "CANCELLED")
            return item.name + " (cancelled)";
    return {};
}

}  // namespace

void ICalendarWriter::begin(const DatabaseHead& head)
{
    if (head.type != personal::AppointmentsType && head.type != personal::TasksType)
        throw FormatFault("iCalendar holds appointments and tasks, databases of type 25 and 26; this one's type is " +
                          std::to_string(head.type));
    tasks_ = head.type == personal::TasksType;
    if (!begun_)
        out_ << "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Quillbox//quillbox//EN\r\n";
    begun_ = true;
}

void ICalendarWriter::add(std::span<const CEPROPVAL> properties)
{
    Component item = tasks_ ? todoOf(properties) : eventOf(properties);
    if (!tasks_ && std::ranges::find(item.lines, "DTSTART", &ContentLine::name) == item.lines.end()) {
        leftOut_.add("VEVENT (without a start)");
        return;
    }
    item.add("UID", escaped(identifiers_.of(properties)));
    item.add("DTSTAMP", NoTime);
    const CalendarZones none;
    out_ << writtenText(item, readingOf(tasks_, none), properties, leftOut_);
}

void ICalendarWriter::finish()
{
    if (!begun_)
        throw FormatFault("there is no database to write");
    out_ << "END:VCALENDAR\r\n";
}

void readICalendar(LineReader& lines, DatabaseTarget& target, LeftOut& leftOut)
{
    CalendarZones zones;
    readZones(lines, zones, leftOut);
    ComponentReader items(lines, "VCALENDAR");
    std::optional<std::size_t> appointments;
    std::optional<std::size_t> tasks;
    std::string method;
    while (const auto item = items.next()) {
        if (const std::string found = takeCalendarLines(items, leftOut); !found.empty())
            method = found;
        const bool known = item->name == "VEVENT" || item->name == "VTODO";
        if (const std::string name = known ? leftOutName(*item, method) : ""; !name.empty()) {
            leftOut.add(name);
        } else if (item->name == "VEVENT") {
            if (!appointments)
                appointments = target.begin(appointmentsHead());
            target.add(*appointments, appointmentFrom(*item, zones, leftOut).properties());
        } else if (item->name == "VTODO") {
            if (!tasks)
                tasks = target.begin(tasksHead());
            target.add(*tasks, taskFrom(*item, zones, leftOut).properties());
        } else if (item->name != "VTIMEZONE") {
            leftOut.add(item->name);
        }
    }
    (void)takeCalendarLines(items, leftOut);
    if (!appointments && !tasks && leftOut.count() != 0)
        throw FormatFault("the file has nothing to import: " + leftOut.sentence());
    if (lines.number() == 0)
        throw FormatFault("the file is empty");
}

}  // namespace database_formats
