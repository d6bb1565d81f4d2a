#include "registry_text.h"

#include "failure.h"

#include "database_formats/character_set.h"
#include "database_formats/format_fault.h"
#include "database_formats/value_text.h"

#include "text/host_name.h"

#include <algorithm>

namespace quillbox_device {

namespace {

constexpr std::string_view Utf16Mark = "\xFF\xFE";
constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";
// A file that isn't UTF-16 is converted as a whole in memory, so its size is limited.
constexpr std::size_t MostBytes = std::size_t{64} * 1024 * 1024;

}  // namespace

RegistryText::RegistryText(Input& input, const std::string& name) : input_(input), name_(name)
{
    ahead_ = readPart(Utf16Mark.size());
    if (ahead_ == Utf16Mark || ahead_.empty())
        return;
    ahead_ += readPart(MostBytes);
    if (ahead_.size() > MostBytes)
        throw Failure("\"" + name_ + "\" has more than 64 MiB and isn't UTF-16. Nothing was imported.");
    convert();
}

std::size_t RegistryText::read(std::span<std::byte> buffer)
{
    const std::size_t kept = std::min(buffer.size(), ahead_.size() - used_);
    std::copy_n(std::as_bytes(std::span(ahead_)).begin() + static_cast<std::ptrdiff_t>(used_), kept, buffer.begin());
    used_ += kept;
    const std::string more = readPart(buffer.size() - kept);
    std::ranges::copy(std::as_bytes(std::span(more)), buffer.begin() + static_cast<std::ptrdiff_t>(kept));
    return kept + more.size();
}

std::string RegistryText::readPart(std::size_t bytes)
{
    std::string part(bytes, 0);
    input_.stream().read(part.data(), static_cast<std::streamsize>(bytes));
    if (input_.stream().bad())  // a read error, not the end of the file; the Failure undoes the import
        throw Failure("\"" + name_ + "\" can't be read. Nothing was imported.");
    part.resize(static_cast<std::size_t>(input_.stream().gcount()));
    return part;
}

void RegistryText::convert()
{
    std::string utf8 = ahead_.starts_with(Utf8Mark) ? ahead_.substr(Utf8Mark.size()) : ahead_;
    guessed_ = !database_formats::isValidUtf8(utf8);
    try {
        if (guessed_)
            utf8 = database_formats::toUtf8(utf8, database_formats::UsualCharacterSet);
    } catch (const database_formats::FormatFault&) {
        throw Failure("\"" + name_ + "\" is neither UTF-16 nor UTF-8 nor Windows-1252. Nothing was imported.");
    }
    ahead_ = Utf16Mark;
    for (const char16_t unit : platform::text::fromUtf8(utf8))
        ahead_ += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
}

}  // namespace quillbox_device
