#include "staged_registry.h"

#include "host/error.h"
#include "host/files.h"
#include "host_file.h"
#include "registry/registry_content.h"

#include "ce/error.h"
#include "ce/file.h"

#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <system_error>
#include <vector>

namespace platform::registry {

namespace {

namespace fs = std::filesystem;
using database::Step;

constexpr const char* StagedName = "registry.staged";
constexpr const char* GrowingName = "registry.growing";
constexpr const char* RefusedName = "registry.refused";
constexpr std::size_t CopiedAtOnce = 65536;

struct Staging {
    std::mutex mutex;
    fs::path folder;
};

Staging& staging()
{
    static Staging state;
    return state;
}

DWORD copyTo(HostFile& target, HANDLE file)
{
    std::vector<std::byte> piece(CopiedAtOnce);
    for (;;) {
        DWORD count = 0;
        if (!ReadFile(file, piece.data(), CopiedAtOnce, &count, nullptr))
            return GetLastError();
        if (count == 0)
            return target.flush() ? ERROR_SUCCESS : host::ioError(target.error());
        if (!target.write({piece.data(), count}))
            return host::ioError(target.error());
    }
}

// Ignores the content. Used to check a text without changing anything.
class IgnoringSink final : public RegistryTextSink {
public:
    bool key(const KeyPath& /*path*/) override { return true; }
    bool value(std::u16string_view /*name*/, DWORD /*type*/, std::span<const std::byte> /*data*/) override
    {
        return true;
    }
};

// Returns what is wrong with a registry file, or nothing. The offset of the open file must be 0.
std::optional<RegistryTextFault> faultOf(HostFile& file)
{
    IgnoringSink sink;
    return readRegistryText([&](std::span<std::byte> buffer) { return file.read(buffer); }, Wholeness::Required, sink);
}

struct Grown {
    DWORD error = ERROR_SUCCESS;
    bool whole = false;
};

Grown grow(HostFile& target, HANDLE file)
{
    if (const DWORD error = copyTo(target, file))
        return {error, false};
    const bool whole = target.rewind() && !faultOf(target);
    return {host::ioError(target.error()), whole};
}

bool keepAside(const fs::path& folder, std::string& sentence)
{
    std::error_code failure;
    fs::rename(folder / StagedName, folder / RefusedName, failure);
    const std::string name = "The damaged registry file \"" + (folder / StagedName).string() + "\" ";
    sentence = failure ? name + "can't be renamed: " + failure.message() + "."
                       : name + "was not put in force. It was kept as \"" + (folder / RefusedName).string() + "\".";
    return !failure;
}

// Deletes the staged file after its content has replaced the registry. If the file stayed, the next start would replace
// the registry again and undo later changes.
bool takeAway(const fs::path& folder, std::string& sentence)
{
    std::error_code failure;
    fs::remove(folder / StagedName, failure);
    if (!failure)
        failure.assign(host::flushFolder(folder), std::generic_category());
    if (failure)
        sentence = "The registry file \"" + (folder / StagedName).string() +
                   "\" has replaced the registry but can't be deleted: " + failure.message() + ".";
    return !failure;
}

}  // namespace

void setStagingFolder(const fs::path& folder)
{
    const std::scoped_lock lock(staging().mutex);
    staging().folder = folder;
}

DWORD stageRegistry(HANDLE file)
{
    const std::scoped_lock lock(staging().mutex);
    const fs::path& folder = staging().folder;
    if (folder.empty())
        return ERROR_GEN_FAILURE;
    Grown grown;
    {
        HostFile target(folder / GrowingName, O_RDWR | O_CREAT | O_TRUNC);
        grown = target ? grow(target, file) : Grown{host::ioError(target.error()), false};
    }
    const fs::path staged = folder / (grown.whole ? StagedName : RefusedName);
    std::error_code failure;
    if (grown.error == ERROR_SUCCESS) {
        fs::rename(folder / GrowingName, staged, failure);
        grown.error = host::ioError(failure.value());
    }
    if (grown.error != ERROR_SUCCESS) {
        fs::remove(folder / GrowingName, failure);
        return grown.error;
    }
    const DWORD error = host::ioError(host::flushFolder(folder));
    if (error != ERROR_SUCCESS)
        fs::remove(staged, failure);
    return error == ERROR_SUCCESS && !grown.whole ? ERROR_GEN_FAILURE : error;
}

void unstageRegistry()
{
    const std::scoped_lock lock(staging().mutex);
    std::error_code ignored;  // if this fails, the next start replaces the registry, as the caller first asked
    fs::remove(staging().folder / StagedName, ignored);
}

bool enforceStagedRegistry(const fs::path& folder, std::string& sentence)
{
    std::error_code ignored;
    fs::remove(folder / GrowingName, ignored);  // an unfinished copy that a killed process left
    HostFile staged(folder / StagedName, O_RDONLY);
    if (staged.error() == ENOENT)
        return true;
    const std::string what =
        "The registry file \"" + (folder / StagedName).string() + "\", which is to replace the registry, ";
    if (staged.error() != 0 && staged.error() != ELOOP) {
        sentence = what + "can't be opened: " + std::generic_category().message(staged.error()) + ".";
        return false;
    }
    if (!staged || !staged.isRegularFile())
        return keepAside(folder, sentence);

    const auto fault = faultOf(staged);
    if (fault && staged.error() == 0)
        return keepAside(folder, sentence);
    Step step = Step::Failed;
    if (!fault && staged.rewind()) {
        const auto source = [&](std::span<std::byte> buffer) { return staged.read(buffer); };
        const ContentRead read = readContent(source, Wholeness::Required, Unnamed::Removed);
        if (read.good())
            return takeAway(folder, sentence);
        step = read.step;
    }
    sentence = what + (step == Step::Full ? "doesn't fit on the disk. Free some space and start again."
                                          : "can't be read or written to the device's database.");
    return false;
}

}  // namespace platform::registry
