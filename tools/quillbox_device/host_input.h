// host_input.h - opens a file that a command reads.
#pragma once

#include "kernel/standard_streams.h"

#include <fstream>
#include <string>

namespace quillbox_device {

// A file of the host (the Linux system) that is read, or standard input if the path is "-". The constructor throws a
// Failure if the file can't be opened.
class Input {
public:
    explicit Input(const std::string& file);
    std::istream& stream()
    {
        return file_.is_open() ? static_cast<std::istream&>(file_) : platform::kernel::standardInput();
    }

private:
    std::ifstream file_;
};

}  // namespace quillbox_device
