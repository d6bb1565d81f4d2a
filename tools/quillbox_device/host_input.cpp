#include "host_input.h"

#include "failure.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace quillbox_device {

Input::Input(const std::string& file)
{
    if (file == "-")
        return;
    errno = 0;
    file_.open(file, std::ios::binary);
    const int opened = errno;
    std::error_code none;
    const int error = std::filesystem::is_directory(file, none) ? EISDIR : opened;
    if (!file_ || error == EISDIR)
        throw Failure("\"" + file + "\" can't be read: " + std::generic_category().message(error) + ".", exitBadUsage);
}

}  // namespace quillbox_device
