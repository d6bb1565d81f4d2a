// sound_stream.h - packs undamaged raw bytes into a new compressed stream in a temporary file.
#pragma once

#include "archive/growing_file.h"
#include "archive/listed_set.h"
#include "set/block_codec.h"

#include <memory>
#include <span>
#include <vector>

namespace quillbox_set {

class SoundStream {
public:
    // Makes the file in the platform's root folder. The destructor deletes the file.
    SoundStream();

    // Adds a block with these raw bytes. There must be at most RawBlockBytes of them.
    void add(std::span<const std::byte> raw);
    // Closes the stream if it is still open. Returns the file, or null if it couldn't be written.
    const archive::OpenFile* finish();

    // Returns an item of this kind whose stream is the whole file.
    archive::Item item(BYTE kind) const;

private:
    void addBlock(std::span<const BYTE> raw);

    archive::GrowingFile file_;
    std::vector<std::byte> packed_;
    std::unique_ptr<PackingMemory> memory_;
    bool isFinished_ = false;
};

}  // namespace quillbox_set
