// target_stream.h - a target file as a stream of text.
#pragma once

#include "target_file.h"

#include <streambuf>
#include <vector>

namespace quillbox_set {

// For a std::ostream, which turns bad when a write to the file has failed. Flush the stream at its end. Without a
// target the text goes nowhere, and nothing fails.
class TargetBuffer final : public std::streambuf {
public:
    explicit TargetBuffer(TargetFile* target);

private:
    int_type overflow(int_type character) override;
    int sync() override;

    TargetFile* target_;
    std::vector<char> buffer_;
};

}  // namespace quillbox_set
