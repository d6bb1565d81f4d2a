// temporary_folder.h - a temporary folder on the host (the Linux system).
#pragma once

#include <string>

namespace archive {

// A new, empty folder in the folder for temporary files. The destructor deletes it with its content.
class TemporaryFolder {
public:
    // Throws std::runtime_error if it can't be made.
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace archive
