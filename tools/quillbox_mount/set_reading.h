// set_reading.h - reads sets with the code of tools/archive. This code can read only one set at a time, so a mutex
// guards it.
//
// The threads of the mount share the following objects. Each object has a mutex of its own:
// - a SetReading, which uses the platform's mounts of host folders and the static buffers of src/set;
// - the caches (bounded_cache.h): unpacked blocks, streams with the offsets of their blocks, texts;
// - a stream that two threads read at the same time (seekable_stream.h).
// The following are atomic: the sizes of files (shown_sets.h), the size of a stream, the last file that was read or
// pushed into the kernel's cache (push_ahead.h), and the flags that end the mount. A set is loaded under a mutex of
// ShownSets. The tree of a set is written once, before other threads can read it.
#pragma once

#include "archive/set_files.h"
#include "data_file.h"
#include "host/descriptor.h"
#include "set_tree.h"

#include "kernel/mutex.h"

#include <cstdint>
#include <memory>

namespace quillbox_mount {

// An item as text, in an unnamed file: a file whose directory entry was deleted while it is open.
struct ItemText {
    platform::host::Descriptor file = {};  // not open if the item is damaged or there is no room for the text
    std::uint64_t bytes = 1;  // 1 if `file` isn't open: the shown file then has one byte, which can't be read
};

// Can be used on any thread. A mutex ensures that only one call runs at a time.
class SetReading {
public:
    // Returns null if the list can't be read.
    std::unique_ptr<const SetTree> readTree(const archive::SetFiles& files) EXCLUDES(mutex_);

    // Writes the item as text to an unnamed file. The folder for temporary files needs space for the text. During the
    // call it also needs space for the item's stream and, if the item is a database, for its image. `data` is the set's
    // data file, which is already open. The call doesn't open the data file by its path, because the path may lead to
    // another file by now.
    ItemText writeText(const DataFile& data, const Node& node) EXCLUDES(mutex_);

private:
    platform::kernel::Mutex mutex_;
};

}  // namespace quillbox_mount
