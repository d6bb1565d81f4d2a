// read_format.cpp - reads any bytes as an exported file of databases in QUILLBOX_FUZZED_FORMAT. If the input contains a
// NUL, the bytes before the NUL are a file of columns. Only CSV uses this file. Our writer must write each record that
// is read, or count parts of it as left out. The writer may refuse only a record with the same property twice. If
// nothing was left out, reading the written record must give the same record.

#include "database_formats/database_format.h"
#include "database_formats/identifier.h"
#include "database_formats/value_text.h"

#include "ce/personal_databases.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>

namespace {

using namespace database_formats;

constexpr Format FuzzedFormat = Format::QUILLBOX_FUZZED_FORMAT;

// Returns the properties as sorted texts. Leaves out numbers that are 0, because vCard and iCalendar don't distinguish
// them from missing numbers.
std::vector<std::string> textsOf(std::span<const CEPROPVAL> record)
{
    std::vector<std::string> texts;
    for (const CEPROPVAL& property : record)
        if (property.wFlags != 0 || LOWORD(property.propid) == CEVT_LPWSTR ||
            valueText(property, Controls::Coded) != "0")
            texts.push_back(std::to_string(property.propid) + " " + std::to_string(property.wFlags) + " " +
                            valueText(property, Controls::Coded));
    std::ranges::sort(texts);
    return texts;
}

// A record without a UID gets one when it is written.
bool isIdentifier(const std::string& text)
{
    return text.starts_with(std::to_string(personal::Identifier) + " ");
}

// Receives the record that was written and read again.
class Returned final : public DatabaseTarget {
public:
    std::size_t begin(const DatabaseHead& /*head*/) override { return 0; }
    void add(std::size_t /*database*/, std::span<const CEPROPVAL> record) override { texts = textsOf(record); }

    std::vector<std::string> texts;
};

class Kept final : public DatabaseTarget {
public:
    std::size_t begin(const DatabaseHead& head) override
    {
        heads_.push_back(head);
        return heads_.size() - 1;
    }
    void add(std::size_t database, std::span<const CEPROPVAL> record) override
    {
        std::stringstream file;
        if (!isWritten(heads_[database], record, file))
            return;
        Returned returned;
        LeftOut leftOut;
        try {
            read(FuzzedFormat, file, returned, leftOut);
        } catch (const FormatFault&) {
            std::abort();  // the file is from our own writer and must be readable
        }
        if (database_formats::propertyIn(record, personal::Identifier) == nullptr)
            std::erase_if(returned.texts, isIdentifier);
        if (returned.texts != textsOf(record) || leftOut.count() != 0)
            std::abort();
    }

private:
    bool isWritten(const DatabaseHead& head, std::span<const CEPROPVAL> record, std::ostream& file) const
    {
        try {
            LeftOut leftOut;
            const auto writer = makeWriter(FuzzedFormat, file, leftOut);
            writer->begin(head);
            writer->add(record);
            writer->finish();
            return leftOut.count() == 0;
        } catch (const FormatFault& fault) {
            if (std::string_view(fault.what()).find("twice") == std::string_view::npos)
                std::abort();
            return false;
        }
    }

    std::vector<DatabaseHead> heads_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::size_t end = text.find('\0');
    Kept kept;
    LeftOut leftOut;
    try {
        std::istringstream columns(end == std::string::npos ? "" : text.substr(0, end));
        std::istringstream file(end == std::string::npos ? text : text.substr(end + 1));
        read(FuzzedFormat, file, kept, leftOut, columnMapFrom(columns));
    } catch (const FormatFault&) {
        // Most inputs can't be read as such a file.
    }
    (void)leftOut.sentence();
    return 0;
}
