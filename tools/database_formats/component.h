// component.h - what stands between BEGIN:NAME and END:NAME in vCard or iCalendar: a card, an appointment, a task.
#pragma once

#include "content_line.h"
#include "line_reader.h"

#include <optional>
#include <string>
#include <vector>

namespace database_formats {

struct Component {
    std::string name;  // capitals
    std::vector<ContentLine> lines;
    std::vector<Component> parts;
    std::size_t number = 0;  // of the file's line where it begins

    void add(std::string lineName, std::string value, std::vector<Parameter> parameters = {});
};

// With its BEGIN and END.
void append(std::string& text, const Component& component);

// Reads one component after the other.
class ComponentReader {
public:
    // A component named `container` is only an envelope: those within are given one by one, its own lines are not.
    ComponentReader(LineReader& lines, std::string_view container) : lines_(lines), container_(container) {}

    // Nothing at the end. Folded lines are put together, quoted-printable and other character sets than UTF-8 decoded;
    // a line where that fails has a fault, and nobody is hindered who doesn't want it.
    // Throws a FormatFault, also for one that is nested too deep, or larger than a record can be.
    [[nodiscard]] std::optional<Component> next();

    // True once something began, be it the envelope alone.
    [[nodiscard]] bool sawAny() const { return sawAny_; }

private:
    [[nodiscard]] bool readLogical();
    [[nodiscard]] bool readPhysical();
    [[nodiscard]] std::optional<ContentLine> nextLine();
    void fill(Component& component, std::size_t depth);
    [[noreturn]] void refuse(const char* what, std::size_t line) const;

    LineReader& lines_;
    std::string container_;
    std::string physical_;  // read ahead, to see whether it goes on with the line before
    bool hasPhysical_ = false;
    std::string logical_;
    std::size_t logicalNumber_ = 0;
    std::size_t bytes_ = 0;  // of the component that is being read
    std::size_t count_ = 0;  // of its lines and their parameters
    bool inContainer_ = false;
    bool sawAny_ = false;
};

}  // namespace database_formats
