// written_disks.h - the disks of the host that an extraction writes to, flushed once at its end: a flush of each of
// 20,000 small files would take longer than all the rest.
#pragma once

#include "file/host_calls.h"

#include <string>
#include <vector>

#include <sys/types.h>

namespace quillbox_set {

class WrittenDisks {
public:
    // Before the first byte is written to the file at `path`, whose folder is there: the host tells of what it failed
    // to write since its disk was noted.
    void note(const std::u16string& path);

    // Puts on the disks whatever was written. An errno; 0 if all of it is there.
    [[nodiscard]] int flush();

private:
    struct Disk {
        dev_t number;
        platform::file::Descriptor folder;
    };

    std::u16string lastFolder_;  // of the items one after the other most lie in the same
    std::vector<Disk> disks_;
    int error_ = 0;
};

}  // namespace quillbox_set
