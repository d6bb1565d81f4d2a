#include "archive/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace archive {

TemporaryFolder::TemporaryFolder()
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    path_ = (folder / "quillbox-XXXXXX").string();
    if (!error && !::mkdtemp(path_.data()))
        error.assign(errno, std::generic_category());
    if (error)
        throw std::runtime_error("a folder for temporary files can't be made" +
                                 (folder.empty() ? "" : " in \"" + folder.string() + '"') + ": " + error.message());
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace archive
