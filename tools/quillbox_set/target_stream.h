// target_stream.h - a stream buffer that writes to a growing file.
#pragma once

#include "archive/growing_file.h"

#include <streambuf>
#include <vector>

namespace quillbox_set {

// A buffer for a std::ostream. After a write to the file has failed, output to the stream fails. Flush the stream after
// the last output.
class TargetBuffer final : public std::streambuf {
public:
    explicit TargetBuffer(archive::GrowingFile& target);

private:
    int_type overflow(int_type character) override;
    int sync() override;

    archive::GrowingFile& target_;
    std::vector<char> buffer_;
};

}  // namespace quillbox_set
