// set_reading.h - what the mount reads by the room `archive`, which reads one set at a time.
//
// The threads of the mount share these things, each with a mutex of its own:
// - this object, which uses the platform's name space and the static buffers of src/set;
// - the caches (bounded_cache.h): unpacked blocks, the places of blocks, texts;
// - a stream that two of them read at the same time (seekable_stream.h).
// Atomic are the sizes of files (shown_sets.h), the size of a stream, the file that was pushed last, and what says that
// the mount ends. A set is loaded under a mutex of ShownSets. Its tree is written once, before it is shared.
#pragma once

#include "archive/set_files.h"
#include "data_file.h"
#include "host/descriptor.h"
#include "set_tree.h"

#include "kernel/mutex.h"

#include <cstdint>
#include <memory>

namespace quillbox_mount {

// An item as text, in a file without a name.
struct ItemText {
    platform::host::Descriptor file = {};  // not open if the item is damaged or there is no room for the text
    std::uint64_t bytes = 1;               // then this is a byte that can't be read
};

// Any thread. The calls wait for each other.
class SetReading {
public:
    // Null if the list can't be read.
    std::unique_ptr<const SetTree> readTree(const archive::SetFiles& files) EXCLUDES(mutex_);

    // Needs space in the folder for temporary files: for the text, and for the item's stream and the image of a
    // database meanwhile. `data` is the set's data file as it was opened: the names of the set may lead to another one
    // now.
    ItemText writeText(const DataFile& data, const Node& node) EXCLUDES(mutex_);

private:
    platform::kernel::Mutex mutex_;
};

}  // namespace quillbox_mount
