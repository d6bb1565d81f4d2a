// registry_text.h - reads a .reg file in any encoding in which programs save it, and converts it to UTF-16 text.
#pragma once

#include "host_input.h"

#include <cstddef>
#include <span>
#include <string>

namespace quillbox_device {

class RegistryText {
public:
    // `name` is for messages. Throws a Failure if the file can't be read. A file that isn't UTF-16 must be UTF-8 or
    // Windows-1252 and have at most 64 MiB. Otherwise the constructor throws a Failure, too.
    RegistryText(Input& input, const std::string& name);

    // Fills the buffer with the next bytes of the UTF-16 text and returns their number. The number is less than the
    // size of the buffer only at the end of the text. Throws a Failure if the file can't be read.
    std::size_t read(std::span<std::byte> buffer);

    // True if the file is neither UTF-16 nor UTF-8 and was therefore read as Windows-1252.
    bool isGuessed() const { return guessed_; }

private:
    std::string readPart(std::size_t bytes);
    void convert();

    Input& input_;
    std::string name_;
    // The bytes that read() returns first: the two bytes of the UTF-16 mark, or the whole file converted to UTF-16.
    std::string ahead_;
    std::size_t used_ = 0;
    bool guessed_ = false;
};

}  // namespace quillbox_device
