#include "written_text.h"

#include "database_formats/format_fault.h"
#include "database_formats/identifier.h"
#include "database_formats/property_names.h"
#include "database_formats/value_text.h"

#include "ce/personal_databases.h"

#include <algorithm>
#include <sstream>

namespace database_formats {

namespace {

// Returns the component as a reader would read it from a file.
Component readBackFrom(const std::string& text)
{
    std::istringstream in(text);
    LineReader lines(in);
    auto component = ComponentReader(lines, "").next();
    if (!component)
        throw FormatFault("a record can't be written");
    return std::move(*component);
}

bool comesBack(const CEPROPVAL& property, std::span<const CEPROPVAL> readBack)
{
    const CEPROPVAL* found = propertyIn(readBack, property.propid);
    if (found == nullptr)
        return isZero(property) && property.wFlags == 0;  // the formats have no line for a number 0
    return found->wFlags == property.wFlags && valueText(*found, Controls::Kept) == valueText(property, Controls::Kept);
}

}  // namespace

std::string writtenText(const Component& component, const Reading& read, std::span<const CEPROPVAL> properties,
                        LeftOut& leftOut)
{
    std::string text;
    append(text, component);
    try {
        LeftOut ignored;
        const Record readBack = read(readBackFrom(text), ignored);
        for (const CEPROPVAL& property : properties)
            if (!comesBack(property, readBack.properties()))
                leftOut.add(nameOf(property.propid));
    } catch (const FormatFault& fault) {
        // The line number is dropped: it is relative to the beginning of this record.
        throw FormatFault(std::string("the format can't hold a record: ") + fault.what());
    }
    return text;
}

}  // namespace database_formats
