#include "device_path.h"

#include "mounts.h"
#include "text/host_name.h"

#include "ce/error.h"

#include <algorithm>
#include <optional>

namespace platform::file {

namespace {

// Whether the character becomes a single byte of the same value in the host's name. Most names contain only such
// characters.
constexpr bool isSameOnHost(char16_t character)
{
    return character > 0x1F && character < 0x7F && character != u'/' && character != u'*' && character != u'?' &&
           character != u'"' && character != u'<' && character != u'>' && character != u'|';
}

// Converts one name of a device path to its host name, and appends that to a host path. Returns false if the device
// name has no host name (see toHostName).
bool appendName(std::string& path, std::u16string_view name)
{
    if (!path.empty())
        path.push_back('/');
    if (name.size() <= 255 && !name.empty() && name.front() != u'.' && std::ranges::all_of(name, isSameOnHost)) {
        const auto start = static_cast<std::ptrdiff_t>(path.size());
        path.resize(path.size() + name.size());
        std::ranges::transform(name, path.begin() + start, [](char16_t unit) { return static_cast<char>(unit); });
        return true;
    }
    const std::optional<std::string> hostName = text::toHostName(name);
    path += hostName.value_or("");
    return hostName.has_value();
}

HostPath failed(DWORD error)
{
    HostPath path;
    path.error = error;
    return path;
}

}  // namespace

std::u16string_view boundedPath(const WCHAR* path)
{
    if (!path)
        return {};
    std::size_t length = 0;
    while (length < MAX_PATH && path[length] != 0)
        ++length;
    return {path, length};
}

std::u16string devicePathOf(const HostPath& hostPath)
{
    std::u16string path;
    if (!hostPath.mount->name().empty())
        path = u'\\' + hostPath.mount->name();
    for (std::size_t start = 0; start < hostPath.below.size();) {
        const std::size_t end = std::min(hostPath.below.find('/', start), hostPath.below.size());
        path += u'\\' + text::toDeviceName(std::string_view(hostPath.below).substr(start, end - start));
        start = end + 1;
    }
    return path.empty() ? u"\\" : path;
}

HostPath resolvePath(std::u16string_view devicePath)
{
    if (devicePath.size() >= MAX_PATH)
        return failed(ERROR_FILENAME_EXCED_RANGE);
    if (devicePath.empty())
        return failed(ERROR_INVALID_NAME);
    if (devicePath.front() == u'\\')
        devicePath.remove_prefix(1);

    HostPath path;
    path.mount = MountUse(rootMount());
    if (!path.mount)
        return failed(ERROR_PATH_NOT_FOUND);
    if (devicePath.ends_with(u'\\')) {
        path.endsInBackslash = true;
        devicePath.remove_suffix(1);
        if (devicePath.empty() || devicePath.ends_with(u'\\'))
            return failed(ERROR_INVALID_NAME);
    }
    path.below.reserve(devicePath.size());  // enough for most paths

    for (bool first = true; !devicePath.empty(); first = false) {
        const std::size_t end = std::min(devicePath.find(u'\\'), devicePath.size());
        const std::u16string_view name = devicePath.substr(0, end);
        devicePath.remove_prefix(std::min(end + 1, devicePath.size()));
        if (first) {
            FoundMount mounted = findMount(name);
            if (mounted.error != 0)
                return failed(mounted.error);
            if (mounted.folder) {
                path.mount = std::move(mounted.folder);
                continue;
            }
        }
        path.nameStart = path.below.empty() ? 0 : path.below.size() + 1;
        if (!appendName(path.below, name))
            return failed(ERROR_INVALID_NAME);
    }
    return path;
}

}  // namespace platform::file
