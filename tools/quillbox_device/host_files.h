// host_files.h - the host's files that a command reads and writes.
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

// A new file of the host, or standard output for "-". The file has its name, and is on the disk, only when finish() has
// returned. If the name is a link, the file that the link leads to is replaced. The new file gets the rights of the one
// that it replaces. A signal makes archive::checkStop() throw from then on. A pipe, a device or another object that is
// no regular file is written to directly.
class Output {
public:
    // Throws a Failure if the file can't be made. Without `force` also if there is a file or a disk of the name.
    Output(const std::string& file, bool force);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    std::ostream& stream() { return file_.is_open() ? static_cast<std::ostream&>(file_) : std::cout; }
    // Throws a Failure.
    void finish();

private:
    void openTemporary();

    std::string target_;
    std::optional<struct stat> replaced_;  // the file that is replaced, if there is one
    std::string temporary_;                // path of the file until it gets its name; empty if there is none
    platform::host::Descriptor disk_;      // of the file that is written to, for its flush
    std::ofstream file_;
};

}  // namespace quillbox_device
