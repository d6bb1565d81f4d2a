// temporary_file.cpp - see temporary_file.h
#include "temporary_file.h"

#include <utility>

namespace platform::file {

void TemporaryFile::noteDeleted(const HostPlace& place, ParentFolder parent)
{
    letGo();
    parent_ = std::move(parent);
    place_ = place;
}

bool TemporaryFile::isAt(const HostPlace& place) const
{
    return parent_ && place.mount == place_.mount && place.path == place_.path;
}

void TemporaryFile::keep(const HostPlace& place, const FileKey& key, Descriptor descriptor)
{
    if (!isAt(place))
        return;
    key_ = key;
    kept_ = std::move(descriptor);
}

std::optional<TemporaryFile::Found> TemporaryFile::find()
{
    if (!kept_)
        return std::nullopt;
    Found found{parent_->get(), {}};
    if (readStatus(found.folder, place_.name(), found.status) == 0 && isFile(found.status) &&
        keyOf(found.status) == key_)
        return found;
    letGo();
    return std::nullopt;
}

void TemporaryFile::forget()
{
    *this = TemporaryFile();
}

}  // namespace platform::file
