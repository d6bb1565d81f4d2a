#include "temporary_files.h"

#include "attributes.h"
#include "parent_folder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace platform::file {

namespace {

constexpr const char* MarkName = "user.quillbox.temporary";

// An st_dev that no file system of the host has.
constexpr std::uint64_t NoDevice = ~std::uint64_t{0};

void mark(int fileOrFolder)
{
    constexpr std::array Value = {'1'};
    (void)writeExtended(fileOrFolder, MarkName, Value);
}

// Whether the entry has the extended attribute that marks temporary files and the root folder (see temporary_files.h).
// Empty if the host doesn't report it.
std::optional<bool> hasMark(int folder, const char* name)
{
    std::array<char, 1> value{};
    const ssize_t result = readExtended(folder, name, MarkName, value);
    const bool hasNone = result == -ENODATA || result == -EOPNOTSUPP || result == -ENOENT || result == -EPERM;
    return result >= 0 || hasNone ? std::optional(result == 1) : std::nullopt;
}

bool isInRoot(const HostPath& path)
{
    return path.mount->name().empty() && path.nameStart == 0;
}

bool standsOnHost(const HostPath& path)
{
    const ParentFolder parent(path);
    HostStatus status = {};
    return parent.get() < 0 || statusAt(parent, path, status) != -ENOENT;
}

// Whether `path` is the path of `file`, or would be below `file` if that were a folder.
bool isAtOrBelow(const HostPath& path, const HostPath& file)
{
    return path.mount == file.mount && path.below.starts_with(file.below) &&
           (path.below.size() == file.below.size() || path.below[file.below.size()] == '/');
}

}  // namespace

void TemporaryFiles::declare(const HostPath& path)
{
    if (!at(path))
        declared_.push_back({.path = path, .isOnHost = standsOnHost(path), .file = nullptr});
}

void TemporaryFiles::withdraw(const HostPath& path)
{
    std::erase_if(declared_, [&](const Declared& each) { return each.path.isSame(path); });
}

bool TemporaryFiles::areThere() const
{
    return std::ranges::any_of(declared_, [](const Declared& each) { return each.file != nullptr; });
}

std::shared_ptr<SharedFile> TemporaryFiles::find(const HostPath& path) const
{
    const Declared* const declared = at(path);
    return declared ? declared->file : nullptr;
}

std::shared_ptr<SharedFile> TemporaryFiles::make(const HostPath& path)
{
    Declared* const declared = at(path);
    if (!declared || declared->isOnHost || declared->file)
        return nullptr;
    TemporaryContent::Memory memory =
        spare_ ? std::move(spare_) : std::make_unique_for_overwrite<std::byte[]>(TemporaryContent::MemoryBytes);
    declared->file = std::make_shared<SharedFile>(*path.mount, FileKey{NoDevice, ++made_},
                                                  std::make_unique<TemporaryContent>(path, std::move(memory)));
    return declared->file;
}

void TemporaryFiles::noteDeleted(const HostPath& path)
{
    Declared* const declared = at(path);
    if (!declared)
        return;
    declared->isOnHost = false;
    if (const auto file = std::exchange(declared->file, nullptr)) {
        const kernel::MutexLock lock(file->mutex());
        if (file->isInMemory())
            spare_ = file->takeMemory();
    }
}

void TemporaryFiles::expectMade(const HostPath& path) const
{
    if (isInRoot(path) && at(path))
        mark(path.mount->folder());
}

void TemporaryFiles::noteMade(const HostPath& path, int file) const
{
    if (at(path))
        mark(file);
}

std::vector<TemporaryFiles::Nameless> TemporaryFiles::onTheWayTo(const HostPath& path) const
{
    return filesWhere([&](const HostPath& file) { return isAtOrBelow(path, file); });
}

std::vector<TemporaryFiles::Nameless> TemporaryFiles::inFolder(const HostPath& folder) const
{
    return filesWhere(
        [&](const HostPath& file) { return file.mount == folder.mount && file.folder() == folder.below; });
}

std::vector<TemporaryFiles::Nameless> TemporaryFiles::all() const
{
    return filesWhere([](const HostPath&) { return true; });
}

void TemporaryFiles::noteNamed(const SharedFile& file)
{
    for (Declared& each : declared_) {
        if (each.file.get() == &file) {
            each.isOnHost = true;
            each.file.reset();
        }
    }
}

template <class Wanted>
std::vector<TemporaryFiles::Nameless> TemporaryFiles::filesWhere(const Wanted& isWanted) const
{
    std::vector<Nameless> found;
    for (const Declared& each : declared_) {
        if (each.file && isWanted(each.path))
            found.push_back({each.path, each.file});
    }
    return found;
}

const TemporaryFiles::Declared* TemporaryFiles::at(const HostPath& path) const
{
    const auto found = std::ranges::find_if(declared_, [&](const Declared& each) { return each.path.isSame(path); });
    return found == declared_.end() ? nullptr : &*found;
}

TemporaryFiles::Declared* TemporaryFiles::at(const HostPath& path)
{
    return const_cast<Declared*>(std::as_const(*this).at(path));
}

std::optional<bool> isMarkedTemporary(int folder, const char* name)
{
    HostStatus status = {};
    const std::optional<bool> marked = hasMark(folder, name);
    if (!marked.value_or(false))
        return marked;
    return readStatus(folder, name, status) == 0 ? std::optional(isFile(status)) : std::nullopt;
}

bool mayHoldMarkedFiles(int folder)
{
    return hasMark(folder, ".").value_or(true);
}

void removeMark(int folder)
{
    (void)removeExtended(folder, MarkName);
}

}  // namespace platform::file
