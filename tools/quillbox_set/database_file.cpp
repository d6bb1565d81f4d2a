#include "database_file.h"

#include "archive/fault_text.h"
#include "archive/growing_file.h"
#include "archive/item_text.h"
#include "result_line.h"

#include <ostream>
#include <streambuf>
#include <vector>

namespace quillbox_set {

using namespace archive;

namespace {

constexpr std::size_t bufferBytes = 65536;

// The stream fails once a write to the file has failed.
class TargetBuffer final : public std::streambuf {
public:
    explicit TargetBuffer(GrowingFile& target) : target_(target), buffer_(bufferBytes)
    {
        setp(buffer_.data(), buffer_.data() + buffer_.size());
    }

private:
    int_type overflow(int_type character) override
    {
        if (sync() != 0)
            return traits_type::eof();
        if (traits_type::eq_int_type(character, traits_type::eof()))
            return traits_type::not_eof(character);
        return sputc(traits_type::to_char_type(character));
    }

    int sync() override
    {
        const bool good = target_.write(std::as_bytes(std::span(pbase(), pptr())));
        setp(buffer_.data(), buffer_.data() + buffer_.size());
        return good ? 0 : -1;
    }

    GrowingFile& target_;
    std::vector<char> buffer_;
};

}  // namespace

std::string writeDatabaseFile(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                              const DatabaseFile& target, std::optional<std::uint64_t>& bytes)
{
    GrowingFile file(target.path);
    TargetBuffer buffer(file);
    std::ostream out(&buffer);
    database_formats::LeftOut leftOut;
    if (std::string fault = writeDatabase(data, entry, image, target.format, out, leftOut); !fault.empty())
        return fault;
    reportLeftOut(image.name, leftOut);
    if (file.moveToTarget(target.replace) != ERROR_SUCCESS)
        return errorText(file.error());
    bytes = file.bytes();
    return "";
}

}  // namespace quillbox_set
