// embedded_resources.cpp - the program's compiled resource file, built in.

#include "resources/embedded_resources.h"

extern "C" {
extern const std::byte quillboxResourceFile[];
extern const std::byte quillboxResourceFileEnd[];
}

namespace quillbox {

std::span<const std::byte> embeddedResources()
{
    return {quillboxResourceFile, quillboxResourceFileEnd};
}

}  // namespace quillbox
