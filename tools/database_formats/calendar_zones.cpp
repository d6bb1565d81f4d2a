#include "calendar_zones.h"

#include "content_line.h"

#include <date/tz.h>
#include <libical/ical.h>
#include <unicode/ucal.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace database_formats {

// A time zone. Its offset from UTC is less than a day. So if a local time is read as if it were UTC, the resulting time
// differs from the real moment by less than a day. localTimeOf() compares the zone's offsets one day before and one day
// after the resulting time.
class Zone {
public:
    Zone() = default;
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
    virtual ~Zone() = default;

    // Returns the offset in seconds east of UTC. `seconds` is the time in UTC since 1970.
    virtual std::int64_t offsetAt(std::int64_t seconds) const = 0;
};

namespace {

// These limits bound the time that a hostile calendar can take. For each rule, libical computes the changes of all
// years since the rule began.
constexpr std::size_t MostRules = 500;
constexpr std::size_t MostZones = 1000;
constexpr std::size_t LongestName = 255;  // the most bytes of the name of a host or Windows zone, with its prefix
constexpr std::int64_t SecondsOfDay = 86400;
constexpr int LastYear = 2037;  // the last year of the host's tables

class HostZone final : public Zone {
public:
    explicit HostZone(const date::time_zone* zone) : zone_(zone) {}

    std::int64_t offsetAt(std::int64_t seconds) const override
    {
        return zone_->get_info(date::sys_seconds(std::chrono::seconds(seconds))).offset.count();
    }

private:
    const date::time_zone* zone_;
};

class DefinedZone final : public Zone {
public:
    explicit DefinedZone(const std::string& definition) : zone_(icaltimezone_new())
    {
        icalcomponent* component = icalparser_parse_string(definition.c_str());
        if (component != nullptr && icaltimezone_set_component(zone_, component) == 0)
            icalcomponent_free(component);
    }
    DefinedZone(const DefinedZone&) = delete;
    DefinedZone& operator=(const DefinedZone&) = delete;
    ~DefinedZone() override { icaltimezone_free(zone_, 1); }

    std::int64_t offsetAt(std::int64_t seconds) const override
    {
        icaltimetype utc = icaltime_from_timet_with_zone(seconds, 0, icaltimezone_get_utc_timezone());
        int isDaylight = 0;
        return icaltimezone_get_utc_offset_of_utc_time(zone_, &utc, &isDaylight);
    }

private:
    icaltimezone* zone_;
};

// The host's zone tables end in 2037. For a later year, returns an earlier year whose dates have the same days of the
// week. Returns any other year unchanged. The libraries could compute later years, but this takes longer the later the
// year is.
int yearWithRules(int year)
{
    using namespace std::chrono;
    const auto kind = [](int each) {
        const std::chrono::year wanted(each);
        return std::pair(wanted.is_leap(), weekday(sys_days(wanted / January / 1)));
    };
    int known = std::min(year, LastYear);
    while (kind(known) != kind(year))
        --known;
    return known;
}

std::tm fieldsOf(const Moment& moment)
{
    std::tm fields{};
    fields.tm_year = moment.year - 1900;
    fields.tm_mon = moment.month - 1;
    fields.tm_mday = moment.day;
    fields.tm_hour = moment.hour;
    fields.tm_min = moment.minute;
    fields.tm_sec = moment.second;
    return fields;
}

std::int64_t secondsOf(const Moment& moment)
{
    std::tm fields = fieldsOf(moment);
    return timegm(&fields);
}

std::optional<FILETIME> localTimeAt(std::time_t seconds, DWORD steps)
{
    std::tm fields{};
    if (localtime_r(&seconds, &fields) == nullptr)
        return std::nullopt;
    return fileTimeOf({.year = fields.tm_year + 1900,
                       .month = fields.tm_mon + 1,
                       .day = fields.tm_mday,
                       .hour = fields.tm_hour,
                       .minute = fields.tm_min,
                       .second = std::min(fields.tm_sec, 59),
                       .steps = steps,
                       .hasTime = true,
                       .minutesEast = std::nullopt});
}

// Returns null if the host has no zone of this name.
const date::time_zone* hostZone(std::string_view name)
{
    try {
        return date::locate_zone(std::string(name));
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

// Returns the host's zone of this name. If the name begins with a slash, it can have a prefix ("/example.org/2007/").
// The function then also tries the text after each slash. Returns null if the host has no such zone.
const date::time_zone* hostZoneIn(std::string_view name)
{
    const bool prefixed = name.starts_with('/');
    for (;;) {
        const date::time_zone* const zone = hostZone(name);
        const std::size_t slash = name.find('/');
        if (zone != nullptr || !prefixed || slash == std::string_view::npos)
            return zone;
        name.remove_prefix(slash + 1);
    }
}

// Returns the host's zone for a zone name of Windows, or null.
const date::time_zone* windowsZone(std::string_view name)
{
    const std::u16string windows(name.begin(), name.end());  // the names are ASCII
    char16_t found[LongestName + 1];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t size =
        ucal_getTimeZoneIDForWindowsID(windows.data(), static_cast<std::int32_t>(windows.size()), nullptr, found,
                                       static_cast<std::int32_t>(std::size(found)), &status);
    return U_SUCCESS(status) && size > 0 ? hostZone(std::string(found, found + size)) : nullptr;
}

const date::time_zone* knownZone(std::string_view name)
{
    if (name.size() > LongestName)
        return nullptr;
    const date::time_zone* const host = hostZoneIn(name);
    return host != nullptr ? host : windowsZone(name);
}

// True for a rule that changes the offset a few times a year at most. In a hostile file, a rule such as "every second"
// would take hours to compute.
bool isYearly(const std::string& rule)
{
    bool yearly = false;
    for (const std::string_view part : partsOf(rule, ';', 32)) {
        const std::string_view name = part.substr(0, part.find('='));
        constexpr std::string_view Single[] = {"FREQ",     "INTERVAL", "BYMONTH", "BYDAY", "BYHOUR", "BYMINUTE",
                                               "BYSECOND", "BYSETPOS", "UNTIL",   "COUNT", "WKST"};
        const bool single =
            part.find(',') == std::string_view::npos && std::ranges::find(Single, name) != std::end(Single);
        if (!single &&
            !(name == "BYMONTHDAY" && std::ranges::count(part, ',') <= 6 && rule.find("BYDAY=") != std::string::npos))
            return false;
        yearly = yearly || part == "FREQ=YEARLY";
    }
    return yearly && (rule.find("BYDAY") == std::string::npos || rule.find("BYMONTH=") != std::string::npos);
}

// Returns the number of full centuries from this DTSTART to 2037.
std::size_t centuriesSince(std::string_view start)
{
    int year = 0;
    std::from_chars(start.data(), start.data() + std::min<std::size_t>(start.size(), 4), year);
    return static_cast<std::size_t>(std::clamp(LastYear - year, 0, LastYear) / 100);
}

// True for an offset such as "+0100" or "-053000".
bool isOffset(std::string_view text)
{
    return (text.size() == 5 || text.size() == 7) && (text[0] == '+' || text[0] == '-') &&
           text.find_first_not_of("0123456789", 1) == std::string_view::npos && text.substr(1, 2) < "24" &&
           text.substr(3, 2) < "60";
}

// True for the value of a DTSTART, such as "19700101", "19700101T000000" or "19700101T000000Z".
bool isStart(std::string_view text)
{
    if (text.size() != 8 && (text.size() != 15 || text[8] != 'T') &&
        (text.size() != 16 || text[8] != 'T' || text[15] != 'Z'))
        return false;
    try {
        (void)momentFrom(text);
        return true;
    } catch (const FormatFault&) {
        return false;
    }
}

// Returns whether libical can read the observance, which is a part of a VTIMEZONE. Libical would read a damaged offset
// as a different offset, and would ignore an observance with a damaged start.
bool isUsable(const Component& observance)
{
    bool hasStart = false;
    bool hasFrom = false;
    bool hasTo = false;
    for (const ContentLine& line : observance.lines) {
        const std::string_view value = trimmed(line.value);
        bool& has = line.name == "DTSTART" ? hasStart : line.name == "TZOFFSETFROM" ? hasFrom : hasTo;
        if (line.name != "DTSTART" && line.name != "TZOFFSETFROM" && line.name != "TZOFFSETTO")
            continue;
        if (has || !(line.name == "DTSTART" ? isStart(value) : isOffset(value)))
            return false;
        has = true;
    }
    return hasStart && hasFrom && hasTo;
}

// Returns the size of the definition, counted in rules. MostRules limits the sum of the sizes of all accepted
// definitions. An observance counts as one rule, plus one for each full century from its start to 2037, one for each
// comma in an RRULE, and one for each full hundred commas in an RDATE. Returns nothing if an observance isn't usable or
// an RRULE isn't yearly.
std::optional<std::size_t> rulesOf(const Component& definition)
{
    std::size_t rules = 0;
    for (const Component& observance : definition.parts) {
        ++rules;
        if (!isUsable(observance))
            return std::nullopt;
        for (const ContentLine& line : observance.lines) {
            if (line.name == "RRULE" && !isYearly(inCapitals(line.value)))
                return std::nullopt;
            const auto commas = static_cast<std::size_t>(std::ranges::count(line.value, ','));
            if (line.name == "RRULE" || line.name == "RDATE")
                rules += line.name == "RRULE" ? commas : commas / 100;
            if (line.name == "DTSTART")
                rules += centuriesSince(line.value);
        }
    }
    return rules;
}

std::string nameOf(const Component& definition)
{
    const auto found = std::ranges::find(definition.lines, "TZID", &ContentLine::name);
    return found != definition.lines.end() ? unescaped(found->value) : std::string();
}

}  // namespace

CalendarZones::CalendarZones() = default;
CalendarZones::~CalendarZones() = default;

bool CalendarZones::define(const Component& definition)
{
    const std::string name = nameOf(definition);
    if (definitions_.size() < MostZones && knownZone(name) != nullptr)
        return true;
    const auto rules = rulesOf(definition);
    if (name.empty() || !rules || *rules == 0 || rules_ + *rules > MostRules)
        return false;
    rules_ += *rules;
    std::string text;
    append(text, definition);
    definitions_.emplace(name, std::move(text));
    return true;
}

const Zone* CalendarZones::named(const std::string& name) const
{
    if (const auto known = zones_.find(name); known != zones_.end())
        return known->second.get();
    return zones_.size() < MostZones ? zones_.emplace(name, madeZone(name)).first->second.get() : nullptr;
}

std::unique_ptr<Zone> CalendarZones::madeZone(const std::string& name) const
{
    if (const date::time_zone* const known = knownZone(name))
        return std::make_unique<HostZone>(known);
    const auto defined = definitions_.find(name);
    return defined != definitions_.end() ? std::make_unique<DefinedZone>(defined->second) : nullptr;
}

std::optional<FILETIME> localTimeOf(const Moment& moment)
{
    return localTimeAt(secondsOf(moment) - std::int64_t{60} * moment.minutesEast.value_or(0), moment.steps);
}

// If the moment occurs twice in the zone, the first occurrence applies. If a change of the offset skips the moment, the
// offset before the change applies.
std::optional<FILETIME> localTimeOf(const Moment& moment, const Zone& zone)
{
    Moment known = moment;
    known.year = yearWithRules(moment.year);
    const std::int64_t seconds = secondsOf(known);
    const std::int64_t before = zone.offsetAt(seconds - SecondsOfDay);
    const std::int64_t after = zone.offsetAt(seconds + SecondsOfDay);
    const bool isAfter =
        before != after && zone.offsetAt(seconds - before) != before && zone.offsetAt(seconds - after) == after;
    return localTimeAt(secondsOf(moment) - (isAfter ? after : before), moment.steps);
}

}  // namespace database_formats
