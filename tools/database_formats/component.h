// component.h - the lines between BEGIN:NAME and END:NAME in vCard or iCalendar, such as a contact, an appointment or a
// task.
#pragma once

#include "content_line.h"
#include "line_reader.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace database_formats {

struct Component {
    std::string name;  // in capitals
    std::vector<ContentLine> lines;
    std::vector<Component> parts;
    std::size_t number = 0;  // line number in the file where the component begins

    void add(std::string lineName, std::string value, std::vector<Parameter> parameters = {});
};

// Appends the lines of the component, with BEGIN and END.
void append(std::string& text, const Component& component);

// Reads the components of a file one after another.
class ComponentReader {
public:
    // If a component has the name `container`, next() returns the parts of that component one by one.
    // takeContainerLines() returns the other lines of that component. If `container` is empty, next() returns every
    // component as a whole.
    ComponentReader(LineReader& lines, std::string_view container) : lines_(lines), container_(container) {}

    // Returns the next component, or nothing at the end of the file. Folded lines are joined. Quoted-printable, BASE64
    // and character sets are decoded. If a line can't be decoded, the reader stores the reason in the `fault` of the
    // line and goes on. So a damaged line is an error only for a caller that needs this line. A line that can't be
    // parsed also gets a `fault`. Its name is then the text before the first colon or semicolon. Lines end with LF, CR,
    // CR LF or CR CR LF. Throws a FormatFault for a damaged file, and for a component that is nested too deep or too
    // large.
    std::optional<Component> next();

    // Returns the lines of the container that belong to none of its parts. Each call returns only the lines that next()
    // has read since the previous call.
    std::vector<ContentLine> takeContainerLines() { return std::exchange(containerLines_, {}); }

private:
    bool readLogical();
    bool readPhysical();
    std::optional<ContentLine> nextLine();
    void fill(Component& component, std::size_t depth);
    [[noreturn]] void refuse(const char* what, std::size_t line) const;

    LineReader& lines_;
    std::string container_;
    std::vector<ContentLine> containerLines_;
    std::string read_;          // the last line from lines_. It can contain several lines that end with CR.
    std::size_t readUsed_ = 0;  // number of bytes of read_ that were taken so far
    std::size_t number_ = 0;    // line number of physical_
    std::string physical_;      // the next line. Read ahead, because it can continue the previous one.
    bool hasPhysical_ = false;
    std::string logical_;
    std::size_t logicalNumber_ = 0;
    std::size_t bytes_ = 0;  // number of bytes of the component so far
    std::size_t count_ = 0;  // number of lines and parameters of the component so far
    bool inContainer_ = false;
};

}  // namespace database_formats
