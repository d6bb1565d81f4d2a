// host_files.cpp - see host_files.h.

#include "host_files.h"

#include "failure.h"

#include "descriptor.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <system_error>
#include <unistd.h>

namespace quillbox_device {

namespace fs = std::filesystem;

namespace {

// A new file in the target's folder, under a name that nobody can have put a link in the place of. Empty if there can
// be none.
std::string madeBeside(const fs::path& target)
{
    std::random_device random;
    for (int tries = 0; tries < 100; ++tries) {
        char name[24];
        (void)std::snprintf(name, sizeof name, ".%08x.part", static_cast<unsigned>(random()));
        const fs::path path = target.parent_path() / name;
        const platform::device::Descriptor made(
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
        if (made)
            return path.string();
        if (errno != EEXIST)
            break;
    }
    return {};
}

bool flushed(const std::string& path)
{
    const platform::device::Descriptor opened(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return opened && ::fsync(opened.get()) == 0;
}

}  // namespace

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
    growing_ = madeBeside(file);
    if (!growing_.empty())
        file_.open(growing_, std::ios::binary | std::ios::trunc);
    if (!file_.is_open())
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
        good = good && file_.good() && flushed(growing_);
        if (good) {
            fs::rename(growing_, target_);
            growing_.clear();
        }
    }
    if (!good)
        throw Failure("\"" + target_ + "\" can't be written.");
}

}  // namespace quillbox_device
