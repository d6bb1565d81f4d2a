// component_fields.h - reads the fields of a component that a record can hold, and counts the other fields as left out.
#pragma once

#include "component.h"
#include "database_formats/identifier.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace database_formats {

class ComponentFields {
public:
    ComponentFields(const Component& component, LeftOut& leftOut) : component_(component), leftOut_(leftOut) {}

    // Returns the best line with this name. A line of the type `type` is better than others, and lines of the types in
    // `last` are the worst. Of equally good lines, the first one is returned. All other lines with the name are counted
    // as left out. Lines without content are neither returned nor counted. If the member `leftOut` of a line is true
    // (content_line.h), the line is counted, but never returned. Returns null if there is no line to return. Throws a
    // FormatFault if the value of the best line can't be read.
    const ContentLine* take(std::string_view name, std::string_view type = {},
                            std::span<const std::string_view> last = {});

    // Calls take(name) and adds the text of the line as the property `id`. Adds nothing if there is no line.
    void takeText(Record& record, std::string_view name, CEPROPID id);
    // Adds all categories, of one or several lines, as one text: "A,B" becomes "A;B".
    void takeCategories(Record& record);
    // Calls take(name) and adds the text of the line as the notes, in UTF-8. Adds nothing if there is no line.
    void takeNotes(Record& record, std::string_view name);

    void leaveOut(std::string_view name) { leftOut_.add(name); }
    // Counts each line with the name `name` as left out, unless the line is empty. Uses `shownName` as the name of the
    // field.
    void leaveOut(std::string_view name, std::string_view shownName);
    // Counts all remaining lines with content as left out. Skips the lines whose name is in `ignored`, and the lines
    // that a take function or leaveOut(name, shownName) has already processed.
    void leaveRest(std::span<const std::string_view> ignored);

private:
    void use(const ContentLine& line);

    const Component& component_;
    LeftOut& leftOut_;
    std::vector<std::string> taken_;
};

// Returns the text of the property with this id, or an empty text if there is no such property.
std::string textIn(std::span<const CEPROPVAL> properties, CEPROPID id);

// Add lines that both vCard and iCalendar have. For an empty value, no line is added. Notes that aren't UTF-8 or
// contain a NUL aren't added either.
void addTextLine(Component& component, std::string_view name, const std::string& text);
void addCategories(Component& component, const std::string& categories);
void addNotes(Component& component, std::string_view name, std::span<const CEPROPVAL> properties);

}  // namespace database_formats
