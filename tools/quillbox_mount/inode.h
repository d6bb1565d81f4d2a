// inode.h - libfuse, and the numbers by which the kernel knows files and folders.
#pragma once

#include "shown_sets.h"

#define FUSE_USE_VERSION 312
#include <fuse_lowlevel.h>

namespace quillbox_mount {

inline fuse_ino_t inodeOf(Place place)
{
    return place.isTop() ? FUSE_ROOT_ID : fuse_ino_t{place.set} << 32 | place.node;
}

inline Place placeOf(fuse_ino_t inode)
{
    if (inode == FUSE_ROOT_ID)
        return {};
    return {static_cast<std::uint32_t>(inode >> 32), static_cast<std::uint32_t>(inode)};
}

}  // namespace quillbox_mount
