// component.h - the lines between BEGIN:NAME and END:NAME in vCard or iCalendar: a card, an appointment or a task.
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
    std::size_t number = 0;  // number of the line in the file where it begins

    void add(std::string lineName, std::string value, std::vector<Parameter> parameters = {});
};

// Appends its lines, with BEGIN and END.
void append(std::string& text, const Component& component);

// Reads the components of a file one after another.
class ComponentReader {
public:
    // If a component has the name `container`, the reader returns its parts one by one, and ignores its own lines.
    // Empty: there is no container.
    ComponentReader(LineReader& lines, std::string_view container) : lines_(lines), container_(container) {}

    // The next component, or nothing at the end of the file. Folded lines are joined. Quoted-printable, BASE64 and
    // character sets are decoded. If a line can't be decoded, its `fault` says why, so it matters only to callers that
    // need the line. What isn't a line at all is one whose name is its beginning, with a `fault`. Lines end with LF,
    // CR, CR LF or CR CR LF. Throws a FormatFault for a damaged file, and for a component that is nested too deep or
    // too large.
    std::optional<Component> next();

    // The lines of the container itself that next() has read since the last call.
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
    std::string read_;          // the last line up to its LF, which can consist of several lines that end with CR
    std::size_t readUsed_ = 0;  // number of its bytes that physical_ has had
    std::size_t number_ = 0;    // of the line in physical_
    std::string physical_;      // read ahead, because it can continue the line before it
    bool hasPhysical_ = false;
    std::string logical_;
    std::size_t logicalNumber_ = 0;
    std::size_t bytes_ = 0;  // number of bytes of the component so far
    std::size_t count_ = 0;  // number of its lines and parameters so far
    bool inContainer_ = false;
};

}  // namespace database_formats
