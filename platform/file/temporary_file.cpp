#include "temporary_file.h"

#include <utility>

namespace platform::file {

void TemporaryFile::noteDeleted(const HostPath& path, ParentFolder parent)
{
    closeKept();
    parent_ = std::move(parent);
    path_ = path;
}

bool TemporaryFile::isAt(const HostPath& path) const
{
    return parent_ && path.isSame(path_);
}

void TemporaryFile::keep(const HostPath& path, const FileKey& key, Descriptor descriptor)
{
    if (!isAt(path))
        return;
    key_ = key;
    kept_ = std::move(descriptor);
}

std::optional<TemporaryFile::Found> TemporaryFile::find()
{
    if (!kept_)
        return std::nullopt;
    Found found{parent_->get(), {}};
    if (readStatus(found.folder, path_.name(), found.status) == 0 && isFile(found.status) &&
        keyOf(found.status) == key_)
        return found;
    closeKept();
    return std::nullopt;
}

void TemporaryFile::forget()
{
    *this = TemporaryFile();
}

}  // namespace platform::file
