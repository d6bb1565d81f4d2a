#include "zone_time.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>

namespace database_formats {

namespace {

std::tm fieldsOf(const Moment& moment)
{
    std::tm fields{};
    fields.tm_year = moment.year - 1900;
    fields.tm_mon = moment.month - 1;
    fields.tm_mday = moment.day;
    fields.tm_hour = moment.hour;
    fields.tm_min = moment.minute;
    fields.tm_sec = moment.second;
    fields.tm_isdst = -1;
    return fields;
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

// Changes the time zone of the process, and restores it in the destructor.
// NOLINTBEGIN(concurrency-mt-unsafe): the programs that use the formats have one thread
class TimeZoneScope {
public:
    explicit TimeZoneScope(const std::string& zone)
    {
        if (const char* before = std::getenv("TZ"))
            before_ = before;
        setenv("TZ", (":" + zone).c_str(), 1);
        tzset();
    }
    TimeZoneScope(const TimeZoneScope&) = delete;
    TimeZoneScope& operator=(const TimeZoneScope&) = delete;
    ~TimeZoneScope()
    {
        if (before_)
            setenv("TZ", before_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    std::optional<std::string> before_;
};
// NOLINTEND(concurrency-mt-unsafe)

std::time_t secondsIn(const std::string& zone, const Moment& moment)
{
    const TimeZoneScope scope(zone);
    std::tm fields = fieldsOf(moment);
    return std::mktime(&fields);
}

}  // namespace

std::optional<FILETIME> localTimeOf(const Moment& moment)
{
    std::tm fields = fieldsOf(moment);
    return localTimeAt(timegm(&fields) - std::time_t{60} * moment.minutesEast.value_or(0), moment.steps);
}

bool isZoneKnown(const std::string& zone)
{
    const bool isName = !zone.empty() && zone.size() < 100 && zone.front() != '/' &&
                        zone.find("..") == std::string::npos && std::ranges::all_of(zone, [](char c) {
                            return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                                   c == '_' || c == '-' || c == '+' || c == '/';
                        });
    std::error_code ignored;
    return isName && std::filesystem::is_regular_file(std::filesystem::path("/usr/share/zoneinfo") / zone, ignored);
}

std::optional<FILETIME> localTimeOf(const Moment& moment, const std::string& zone)
{
    return localTimeAt(secondsIn(zone, moment), moment.steps);
}

}  // namespace database_formats
