// component_fields.h - takes what a database can hold out of a component, and tells what remains.
#pragma once

#include "component.h"
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

    // The line of that name: the first of a type, otherwise the first; one of the types in `last` only if there is no
    // other. Null if there is none, or only empty ones and BASE64 that is no text. Those of the name that aren't taken
    // are left out. Throws a FormatFault if the line's value can't be read.
    [[nodiscard]] const ContentLine* take(std::string_view name, std::string_view type = {},
                                          std::span<const std::string_view> last = {});

    // A text as a property, if the line is there.
    void takeText(Record& record, std::string_view name, CEPROPID id);
    // The text of several lines and commas, "A,B" becoming "A;B".
    void takeCategories(Record& record);
    // A text as the bytes of the notes.
    void takeNotes(Record& record, std::string_view name);

    void leaveOut(std::string_view name) { leftOut_.add(name); }
    // All lines of a name, told in other words than it.
    void leaveOut(std::string_view name, std::string_view told);
    // All lines whose name wasn't taken and isn't one of those that say nothing about the thing itself.
    void leaveRest(std::span<const std::string_view> silent);

private:
    void use(const ContentLine& line);

    const Component& component_;
    LeftOut& leftOut_;
    std::vector<std::string> taken_;
};

// The text that a record has under this id; empty if it has none.
[[nodiscard]] std::string textIn(std::span<const CEPROPVAL> properties, CEPROPID id);
[[nodiscard]] const CEPROPVAL* propertyIn(std::span<const CEPROPVAL> properties, CEPROPID id);

// The lines that both vCard and iCalendar write. What is empty gets no line.
void addTextLine(Component& component, std::string_view name, const std::string& text);
void addCategories(Component& component, const std::string& categories);
void addNotes(Component& component, std::string_view name, std::span<const CEPROPVAL> properties);

}  // namespace database_formats
