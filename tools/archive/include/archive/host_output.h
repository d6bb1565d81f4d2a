// host_output.h - writes a file of the host (the Linux system) at a path that the user gives.
#pragma once

#include "host/descriptor.h"

#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include <sys/stat.h>

namespace archive {

// A new file of the host, or standard output for "-". Until finish() the file has a temporary name. finish() flushes
// the file to the disk and renames the file. If the final name is a link, the file that the link leads to is replaced.
// The new file gets the rights of the file that it replaces. As soon as there is a temporary file, SIGINT, SIGTERM and
// SIGHUP make checkStop() throw (long_work.h). A pipe, a device or another object that is no regular file is written to
// directly.
//
// A failure throws a std::runtime_error with a sentence for the user. The sentence may contain any character of the
// path.
class Output {
public:
    // Throws if the file can't be made. Without `force`, also throws if a regular file or a block device has the name.
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
    platform::host::Descriptor disk_;      // descriptor of the written file, for the flush
    std::ofstream file_;
};

}  // namespace archive
