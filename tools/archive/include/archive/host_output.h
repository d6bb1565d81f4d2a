// host_output.h - a file of the host that a command writes: a path that the user gives.
#pragma once

#include "host/descriptor.h"

#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace archive {

// A new file of the host, or standard output for "-". The file has its name, and is on the disk, only when finish() has
// returned. If the name is a link, the file that the link leads to is replaced. The new file gets the rights of the one
// that it replaces. A signal makes checkStop() throw from then on (long_work.h). A pipe, a device or another object
// that is no regular file is written to directly.
//
// What fails throws a std::runtime_error with a sentence for the user, which may contain any character of the path.
class Output {
public:
    // Throws if the file can't be made. Without `force` also if there is a file or a disk of the name.
    Output(const std::string& file, bool force);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    std::ostream& stream() { return file_.is_open() ? static_cast<std::ostream&>(file_) : std::cout; }
    // True if the output is standard output, also under a name such as /dev/stdout.
    bool isPrinted() const { return isPrinted_; }
    // Call it once, after everything is written.
    void finish();

private:
    void openTemporary();

    std::string target_;
    bool isPrinted_ = true;
    std::optional<struct stat> replaced_;  // the file that is replaced, if there is one
    std::string temporary_;                // path of the file until it gets its name; empty if there is none
    platform::host::Descriptor disk_;      // of the file that is written to, for its flush
    std::ofstream file_;
};

}  // namespace archive
