#include "archive/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace archive {

TemporaryFolder::TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "quillbox-XXXXXX").string())
{
    if (!::mkdtemp(path_.data()))
        throw std::runtime_error("a folder for temporary files can't be made: " + path_);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace archive
