// opening.h - from a path to an open file: making, replacing, the rules of sharing.
#pragma once

#include "device_path.h"
#include "open_file.h"

#include "ce/types.h"

#include <memory>

namespace platform::file {

struct Opened {
    DWORD error = 0;
    bool existed = false;
    std::shared_ptr<OpenFile> file;  // null on error
    bool isRomModule = false;        // then it is refused by design: nobody reads one
    bool isOpenHere = false;         // then it is a handle of this process that refuses it
};

[[nodiscard]] Opened openFile(const HostPlace& place, const Sharing& sharing, DWORD creation);

}  // namespace platform::file
