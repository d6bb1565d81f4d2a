// registry_text.h - reads a .reg file in any encoding in which programs save it, and converts it to UTF-16 text.
#pragma once

#include "host_input.h"

#include <cstddef>
#include <span>
#include <string>

namespace quillbox_device {

class RegistryText {
public:
    // `name` is for messages. Throws a Failure if a file that isn't UTF-16 is too large or has no known encoding.
    RegistryText(Input& input, const std::string& name);

    // Fills the buffer with the next bytes and returns their number. It is less than the size of the buffer only at the
    // end. Throws a Failure.
    std::size_t read(std::span<std::byte> buffer);

    // True if the file isn't UTF-8 and was therefore read as Windows-1252.
    bool isGuessed() const { return guessed_; }

private:
    std::string readPart(std::size_t bytes);
    void convert();

    Input& input_;
    std::string name_;
    std::string ahead_;  // the bytes for read() that were read ahead from the file
    std::size_t used_ = 0;
    bool guessed_ = false;
};

}  // namespace quillbox_device
