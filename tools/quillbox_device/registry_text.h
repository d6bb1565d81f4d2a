// registry_text.h - a .reg file in any of the encodings in which programs save it, as the UTF-16 text of the platform.
#pragma once

#include "host_input.h"

#include <cstddef>
#include <span>
#include <string>

namespace quillbox_device {

class RegistryText {
public:
    // `name` is for messages. Throws a Failure for a file of 8 bits a character that is too large or in no known
    // encoding.
    RegistryText(Input& input, const std::string& name);

    // Fills the buffer with the next bytes and returns their number: less than the buffer only at the end. Throws a
    // Failure.
    std::size_t read(std::span<std::byte> buffer);

    // Whether the file isn't UTF-8 and was read as Windows-1252.
    bool isGuessed() const { return guessed_; }

private:
    std::string readPart(std::size_t bytes);
    void convert();

    Input& input_;
    std::string name_;
    std::string ahead_;  // of the text, not yet read
    std::size_t used_ = 0;
    bool guessed_ = false;
};

}  // namespace quillbox_device
