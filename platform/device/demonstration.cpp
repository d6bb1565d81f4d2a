// Writes the content of a fresh device.
#include "demonstration.h"

#include "demonstration_content.h"
#include "host/descriptor.h"
#include "refusal.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace platform::device {

namespace {

namespace fs = std::filesystem;
using host::Descriptor;

// Read-only, system, in ROM.
constexpr std::string_view RomAttributes = "0x45";

void writeAll(const Descriptor& opened, const fs::path& file, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t count = ::write(opened.get(), content.data(), content.size());
        if (count < 0)
            refuse("The file " + quoted(file) + " can't be written", errno);
        content.remove_prefix(static_cast<std::size_t>(count));
    }
}

void writeFile(const fs::path& file, const DemonstrationFile& source)
{
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    if (error)
        refuse("The folder " + quoted(file.parent_path()) + " can't be made", error.value());
    const Descriptor opened(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!opened)
        refuse("The file " + quoted(file) + " can't be made", errno);
    if (source.inRom &&
        ::fsetxattr(opened.get(), "user.DOSATTRIB", RomAttributes.data(), RomAttributes.size(), 0) != 0) {
        fs::remove(file, error);  // without the attribute, the file wouldn't count as a file in ROM
        return;
    }
    writeAll(opened, file, source.content);
    const timespec time{.tv_sec = source.modified, .tv_nsec = 0};
    const timespec times[] = {time, time};
    if (::futimens(opened.get(), times) != 0 || (source.inRom && ::fchmod(opened.get(), 0444) != 0))
        refuse("The file " + quoted(file) + " can't be written", errno);
}

// Sets a value, and makes its key if the key is missing.
bool setValue(const DemonstrationValue& value)
{
    HKEY key = nullptr;
    if (RegCreateKeyExW(value.root, value.key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) != ERROR_SUCCESS)
        return false;
    const LONG set = RegSetValueExW(key, value.name, 0, value.type, reinterpret_cast<const BYTE*>(value.data.data()),
                                    static_cast<DWORD>(value.data.size()));
    return RegCloseKey(key) == ERROR_SUCCESS && set == ERROR_SUCCESS;
}

bool makeDatabase(const DemonstrationDatabase& source)
{
    CEOID oid =
        CeCreateDatabase(source.name, source.type, static_cast<WORD>(source.orders.size()), source.orders.data());
    if (oid == 0)
        return false;
    const HANDLE database = CeOpenDatabase(&oid, nullptr, 0, 0, nullptr);
    if (database == INVALID_HANDLE_VALUE)
        return false;
    const bool written = std::ranges::all_of(source.records, [&](std::vector<CEPROPVAL> record) {
        return CeWriteRecordProps(database, 0, static_cast<WORD>(record.size()), record.data()) != 0;
    });
    return CloseHandle(database) != 0 && written;
}

}  // namespace

void writeDemonstrationFiles(const fs::path& folder)
{
    for (const DemonstrationFile& file : demonstrationFiles())
        writeFile(folder / file.path, file);
}

bool fillDemonstrationStore()
{
    return std::ranges::all_of(demonstrationRegistry(), setValue) &&
           std::ranges::all_of(demonstrationDatabases(), makeDatabase);
}

}  // namespace platform::device
