// target_stream.h - a growing file as a stream of text.
#pragma once

#include "growing_file.h"

#include <streambuf>
#include <vector>

namespace quillbox_set {

// For a std::ostream, which turns bad when a write to the file has failed. Flush the stream at its end.
class TargetBuffer final : public std::streambuf {
public:
    explicit TargetBuffer(GrowingFile& target);

private:
    int_type overflow(int_type character) override;
    int sync() override;

    GrowingFile& target_;
    std::vector<char> buffer_;
};

}  // namespace quillbox_set
