#include "component.h"

#include "database_formats/format_fault.h"
#include "line_decoding.h"

#include <algorithm>

namespace database_formats {

namespace {

constexpr std::size_t DeepestNesting = 8;
// No real contact, appointment or task has as many lines and parameters as this.
constexpr std::size_t MostLinesAndParameters = 4 * 0xFFFF;

// Returns the offset of a soft line break of quoted-printable in the last line of `text`, which begins at `lineBegin`.
// Such a break is a "=" at the end of the line. Blanks may follow the "=", because some mail programs add them. If the
// last line has no such break, returns npos.
std::size_t softBreakIn(std::string_view text, std::size_t lineBegin)
{
    const std::size_t last = text.substr(lineBegin).find_last_not_of(" \t");
    return last != std::string_view::npos && text[lineBegin + last] == '=' ? lineBegin + last : std::string::npos;
}

// Returns whether `line` ends the component although a soft line break precedes it. Some programs write such a break
// even on the last line before END. If `value` contains the beginning of another component, such as a vCard in a note,
// `line` can be the end of that component. Then the function returns false.
bool endsComponent(std::string_view line, std::string_view value)
{
    const std::string text = inCapitals(line.substr(0, std::min<std::size_t>(line.size(), 14)));
    return (text == "END:VCARD" || text == "END:VEVENT" || text == "END:VTODO" || text == "END:VCALENDAR") &&
           inCapitals(value).find("BEGIN:V") == std::string::npos;
}

}  // namespace

void Component::add(std::string lineName, std::string value, std::vector<Parameter> parameters)
{
    lines.push_back({std::move(lineName), std::move(parameters), std::move(value), 0});
}

void append(std::string& text, const Component& component)
{
    append(text, {"BEGIN", {}, component.name, 0});
    for (const ContentLine& line : component.lines)
        append(text, line);
    for (const Component& part : component.parts)
        append(text, part);
    append(text, {"END", {}, component.name, 0});
}

std::optional<Component> ComponentReader::next()
{
    for (;;) {
        bytes_ = count_ = 0;
        auto line = nextLine();
        if (!line) {
            if (inContainer_)
                refuse("the file ends before END:VCALENDAR", number_);
            return std::nullopt;
        }
        const std::string name = inCapitals(line->value);
        if (line->name == "BEGIN" && name == container_ && !inContainer_) {
            inContainer_ = true;
        } else if (line->name == "END" && name == container_ && inContainer_) {
            inContainer_ = false;
        } else if (line->name == "BEGIN" && inContainer_ == !container_.empty()) {
            Component component{name, {}, {}, line->number};
            fill(component, 1);
            return component;
        } else if (inContainer_ && line->name != "BEGIN" && line->name != "END") {
            containerLines_.push_back(std::move(*line));
            if (containerLines_.size() > MostLinesAndParameters)
                refuse("the calendar has too many lines of its own", number_);
        } else if (!inContainer_ || line->name == "BEGIN" || line->name == "END") {
            refuse(container_.empty() ? "this isn't a card: it doesn't begin with BEGIN:VCARD"
                                      : "this isn't a calendar: it doesn't begin with BEGIN:VCALENDAR",
                   line->number);
        }
    }
}

void ComponentReader::fill(Component& component, std::size_t depth)
{
    for (;;) {
        auto line = nextLine();
        if (!line)
            refuse("the component that begins here has no END", component.number);
        if (line->name == "END") {
            if (inCapitals(line->value) != component.name)
                refuse("this END doesn't match the last BEGIN", line->number);
            return;
        }
        count_ += 1 + line->parameters.size();
        if (count_ > MostLinesAndParameters)
            refuse("the component that begins here has too many lines and parameters", component.number);
        if (line->name != "BEGIN") {
            component.lines.push_back(std::move(*line));
            continue;
        }
        if (depth == DeepestNesting)
            refuse("BEGIN is nested too deep", line->number);
        Component& part = component.parts.emplace_back(Component{inCapitals(line->value), {}, {}, line->number});
        fill(part, depth + 1);
    }
}

std::optional<ContentLine> ComponentReader::nextLine()
{
    while (readLogical()) {
        if (logical_.empty())
            continue;
        try {
            ContentLine line = contentLineFrom(logical_, logicalNumber_);
            decode(line);
            if (line.name == "BEGIN" || line.name == "END" || line.name == "VERSION")
                line.value = std::string(trimmed(line.value));
            return line;
        } catch (const FormatFault& fault) {
            return ContentLine{logical_.substr(0, logical_.find_first_of(":;")),
                               {},
                               logical_,
                               logicalNumber_,
                               fault.what(),
                               false,
                               true};
        }
    }
    return std::nullopt;
}

// Joins the next line with the lines that continue it. A line that begins with a blank continues the previous line. In
// quoted-printable, the line after a soft line break also continues the previous line.
bool ComponentReader::readLogical()
{
    if (!readPhysical())
        return false;
    logical_ = std::move(physical_);
    logicalNumber_ = number_;
    hasPhysical_ = false;
    if (logicalNumber_ == 1 && logical_.starts_with(ByteOrderMark))
        logical_.erase(0, ByteOrderMark.size());
    const bool softBreaks = isQuotedPrintable(logical_);
    std::size_t begin = 0;  // offset in logical_ of the last line that was added
    while (readPhysical()) {
        const std::size_t softBreak = softBreaks ? softBreakIn(logical_, begin) : std::string::npos;
        if (softBreak != std::string::npos) {
            logical_.erase(softBreak);
            if (endsComponent(physical_, logical_))
                break;
            begin = softBreak;
            logical_ += physical_;
        } else if (physical_.starts_with(' ') || physical_.starts_with('\t')) {
            begin = logical_.size();
            logical_.append(physical_, 1);
        } else {
            break;
        }
        hasPhysical_ = false;
    }
    return true;
}

bool ComponentReader::readPhysical()
{
    if (hasPhysical_)
        return true;
    if (readUsed_ >= read_.size()) {
        if (!lines_.next(read_, LongestRecord - bytes_))
            return false;
        bytes_ += read_.size();
        read_.erase(read_.find_last_not_of('\r') + 1);
        readUsed_ = 0;
    }
    const std::size_t end = std::min(read_.find('\r', readUsed_), read_.size());
    physical_.assign(read_, readUsed_, end - readUsed_);
    readUsed_ = end + 1;
    ++number_;
    if (physical_.find('\0') != std::string::npos)
        refuse("there is a NUL in the line", number_);
    hasPhysical_ = true;
    return true;
}

void ComponentReader::refuse(const char* what, std::size_t line) const
{
    FormatFault fault(what);
    fault.line = line;
    throw fault;
}

}  // namespace database_formats
