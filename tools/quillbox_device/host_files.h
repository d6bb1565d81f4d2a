// host_files.h - what a command reads from and writes to.
#pragma once

#include "host/descriptor.h"
#include "kernel/standard_streams.h"

#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace quillbox_device {

// A file of the host, or standard input for "-". Throws a Failure.
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

// A new file of the host, or standard output for "-". It is there, and on the disk, when finish() returns, and not
// before. It takes the place of what a link leads to, with the rights of the file that it replaces. What is no file,
// such as a pipe or a device, is written to.
class Output {
public:
    // Throws a Failure if there is a file to be replaced (or a disk), unless `force`, or if it can't be made.
    Output(const std::string& file, bool force);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    std::ostream& stream() { return file_.is_open() ? static_cast<std::ostream&>(file_) : std::cout; }
    // Throws a Failure.
    void finish();

private:
    void growBesideTarget();

    std::string target_;
    std::optional<struct stat> replaced_;
    std::string growing_;              // empty if nothing grows, and when it is finished
    platform::host::Descriptor disk_;  // of the file that is written to, for its flush
    std::ofstream file_;
};

}  // namespace quillbox_device
