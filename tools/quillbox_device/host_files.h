// host_files.h - what a command reads from and writes to.
#pragma once

#include <fstream>
#include <iostream>
#include <string>

namespace quillbox_device {

// A file of the host, or standard input for "-". Throws a Failure.
class Input {
public:
    explicit Input(const std::string& file);
    std::istream& stream() { return file_.is_open() ? static_cast<std::istream&>(file_) : std::cin; }

private:
    std::ifstream file_;
};

// A new file of the host, or standard output for "-". It is there when finish() returns, and not before.
class Output {
public:
    // Throws a Failure if the file exists, unless `force`, or can't be made.
    Output(const std::string& file, bool force);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output();

    std::ostream& stream() { return file_.is_open() ? static_cast<std::ostream&>(file_) : std::cout; }
    void finish();

private:
    std::string target_;
    std::string growing_;  // empty for standard output, and when it is finished
    std::ofstream file_;
};

}  // namespace quillbox_device
