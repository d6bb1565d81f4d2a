// host_files.cpp - see host_files.h.

#include "host_files.h"

#include "failure.h"

#include <filesystem>
#include <system_error>

namespace quillbox_device {

namespace fs = std::filesystem;

Input::Input(const std::string& file)
{
    if (file == "-")
        return;
    file_.open(file, std::ios::binary);
    if (!file_ || fs::is_directory(file))
        throw Failure("\"" + file + "\" can't be read.", exitBadUsage);
}

Output::Output(const std::string& file, bool force) : target_(file)
{
    if (file == "-")
        return;
    if (!force && fs::exists(fs::symlink_status(file)))
        throw Failure("\"" + file + "\" exists already; --force replaces it.");
    growing_ = file + ".part";
    file_.open(growing_, std::ios::binary | std::ios::trunc);
    if (!file_)
        throw Failure("\"" + file + "\" can't be written.");
}

Output::~Output()
{
    std::error_code ignored;
    if (!growing_.empty())
        fs::remove(growing_, ignored);
}

void Output::finish()
{
    stream().flush();
    bool good = stream().good();
    if (file_.is_open()) {
        file_.close();
        good = good && file_.good();
        if (good) {
            fs::rename(growing_, target_);
            growing_.clear();
        }
    }
    if (!good)
        throw Failure("\"" + target_ + "\" can't be written.");
}

}  // namespace quillbox_device
