// folder_reader.cpp - see folder_reader.h
#include "folder_reader.h"

#include <dirent.h>

#include <algorithm>
#include <array>

namespace platform::file {

namespace {

constexpr std::size_t BlockBytes = 32768;

bool belongs(const dirent64& entry)
{
    const std::string_view name = entry.d_name;
    return name != "." && name != ".." &&
           (entry.d_type == DT_REG || entry.d_type == DT_DIR || entry.d_type == DT_UNKNOWN);
}

unsigned char withoutCase(char letter)
{
    return static_cast<unsigned char>(letter >= 'A' && letter <= 'Z' ? letter + ('a' - 'A') : letter);
}

// Names that differ by case alone have an order too.
bool comesBefore(std::string_view left, std::string_view right)
{
    const auto [differs, other] = std::ranges::mismatch(left, right, {}, withoutCase, withoutCase);
    if (differs == left.end() && other == right.end())
        return left < right;
    if (differs == left.end() || other == right.end())
        return differs == left.end();
    return withoutCase(*differs) < withoutCase(*other);
}

}  // namespace

std::optional<std::string_view> FolderReader::next()
{
    if (!isRead_)
        readAll();
    if (next_ == order_.size())
        return std::nullopt;
    return names_.data() + order_[next_++];
}

void FolderReader::readAll()
{
    isRead_ = true;
    alignas(dirent64) std::array<std::byte, BlockBytes> block;
    ssize_t bytes = 0;
    while ((bytes = readEntries(folder_.number(), block)) > 0) {
        for (ssize_t place = 0; place < bytes;) {
            const auto* const entry = reinterpret_cast<const dirent64*>(block.data() + place);
            place += entry->d_reclen;
            if (!belongs(*entry))
                continue;
            order_.push_back(names_.size());
            const std::string_view name = entry->d_name;
            names_.insert(names_.end(), name.begin(), name.end());
            names_.push_back('\0');
        }
    }
    error_ = static_cast<int>(bytes);
    std::ranges::sort(order_, comesBefore,
                      [this](std::size_t start) { return std::string_view(names_.data() + start); });
}

}  // namespace platform::file
