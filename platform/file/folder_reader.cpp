#include "folder_reader.h"

#include <dirent.h>

namespace platform::file {

namespace {

constexpr std::size_t BlockBytes = 32768;

bool mayBeWanted(const dirent64& entry, Wanted wanted)
{
    return (entry.d_type == DT_REG && wanted == Wanted::All) || entry.d_type == DT_DIR || entry.d_type == DT_UNKNOWN;
}

}  // namespace

FolderReader::FolderReader(Descriptor folder, Wanted wanted)
    : folder_(std::move(folder)), wanted_(wanted), block_(std::make_unique_for_overwrite<std::byte[]>(BlockBytes))
{
}

std::optional<std::string_view> FolderReader::next()
{
    for (;;) {
        if (next_ == filled_ && !readBlock())
            return std::nullopt;
        const auto* const entry = reinterpret_cast<const dirent64*>(block_.get() + next_);
        next_ += entry->d_reclen;
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && mayBeWanted(*entry, wanted_))
            return name;
    }
}

bool FolderReader::readBlock()
{
    const ssize_t bytes = readEntries(folder_.get(), {block_.get(), BlockBytes});
    next_ = 0;
    filled_ = bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
    error_ = bytes < 0 ? static_cast<int>(bytes) : 0;
    return filled_ > 0;
}

}  // namespace platform::file
