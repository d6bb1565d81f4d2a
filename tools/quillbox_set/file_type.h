// file_type.h - determines the type of a file from its content. The type decides the extension that a recovered file
// gets.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

struct magic_set;

namespace quillbox_set {

class FileTypes {
public:
    // The type depends only on this many bytes at the beginning of a file.
    static constexpr std::size_t HeadBytes = 4096;

    // Loads the data of libmagic. If that fails, every file has an unknown type.
    FileTypes();

    // Returns the extension for a file that begins with these bytes, such as ".jpg" or ".html". It is ".txt" for a text
    // of an unknown type, and ".bin" for any other file of an unknown type.
    std::u16string extensionOf(std::span<const std::byte> head) const;

private:
    struct Close {
        void operator()(magic_set* library) const;
    };
    using Library = std::unique_ptr<magic_set, Close>;

    static Library loaded(int flags);

    Library texts_;
    Library types_;
    Library extensions_;
};

}  // namespace quillbox_set
