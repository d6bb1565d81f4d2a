#include "host_input.h"

#include "failure.h"

#include <filesystem>

namespace quillbox_device {

Input::Input(const std::string& file)
{
    if (file == "-")
        return;
    file_.open(file, std::ios::binary);
    if (!file_ || std::filesystem::is_directory(file))
        throw Failure("\"" + file + "\" can't be read.", exitBadUsage);
}

}  // namespace quillbox_device
