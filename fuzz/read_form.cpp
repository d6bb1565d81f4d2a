// read_form.cpp - reads any bytes as an exported file of databases. The first byte selects the format. Our writer must
// be able to write each record that is read, unless a property occurs twice in it. Reading the written record must give
// the same record, with nothing left out.

#include "database_forms/database_form.h"
#include "database_forms/value_text.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>

namespace {

using namespace database_forms;

constexpr std::uint8_t Forms = 4;

std::vector<std::string> textsOf(std::span<const CEPROPVAL> record)
{
    std::vector<std::string> texts;
    for (const CEPROPVAL& property : record)
        texts.push_back(std::to_string(property.propid) + " " + std::to_string(property.wFlags) + " " +
                        valueText(property, Controls::Coded));
    return texts;
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
    explicit Kept(Form form) : form_(form) {}

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
            read(form_, file, returned, leftOut);
        } catch (const FormFault&) {
            std::abort();  // the text is from our own writer
        }
        if (returned.texts != textsOf(record) || leftOut.count() != 0)
            std::abort();
    }

private:
    bool isWritten(const DatabaseHead& head, std::span<const CEPROPVAL> record, std::ostream& file) const
    {
        try {
            const auto writer = makeWriter(form_, file);
            writer->begin(head);
            writer->add(record);
            writer->finish();
        } catch (const FormFault& fault) {
            if (std::string_view(fault.what()).find("twice") == std::string_view::npos)
                std::abort();
            return false;
        }
        return true;
    }

    Form form_;
    std::vector<DatabaseHead> heads_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto form = static_cast<Form>(data[0] % Forms);
    Kept kept(form);
    std::istringstream file(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    LeftOut leftOut;
    try {
        read(form, file, kept, leftOut);
    } catch (const FormFault&) {
        // Most inputs aren't such a file.
    }
    (void)leftOut.sentence();
    return 0;
}
