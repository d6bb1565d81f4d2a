// inode.h - includes libfuse, converts between inode numbers and places in the mounted sets, and makes libfuse buffers.
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

// Returns a libfuse buffer of this size. Libfuse's own macro for this isn't valid C++.
inline fuse_bufvec bufferOf(std::size_t bytes)
{
    fuse_bufvec buffer{};
    buffer.count = 1;
    buffer.buf[0].size = bytes;
    buffer.buf[0].fd = -1;
    return buffer;
}

}  // namespace quillbox_mount
