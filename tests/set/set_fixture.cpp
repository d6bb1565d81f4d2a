#include "set_fixture.h"

#include "file/name_space.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <ostream>

namespace {

int openFolder(const std::string& path)
{
    std::filesystem::create_directories(path);
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

std::string temporaryFolder()
{
    const bool memory = access("/dev/shm", W_OK) == 0;
    std::string path = (memory ? "/dev/shm" : std::filesystem::temp_directory_path().string()) + "/quillbox-set.XXXXXX";
    if (!mkdtemp(path.data()))
        std::abort();
    return path;
}

}  // namespace

Bytes hex(std::string_view text)
{
    Bytes bytes;
    int digits = 0;
    for (const char c : text) {
        if (std::isxdigit(static_cast<unsigned char>(c)) == 0)
            continue;
        const char digit[] = {c, 0};
        const auto value = static_cast<BYTE>(std::strtol(digit, nullptr, 16));
        if (digits++ % 2 == 0)
            bytes.push_back(static_cast<BYTE>(value << 4));
        else
            bytes.back() |= value;
    }
    return bytes;
}

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes repeated(std::size_t count, BYTE value)
{
    return Bytes(count, value);
}

SetTest::SetTest() : folder(temporaryFolder())
{
    if (!platform::file::addMount({u"", openFolder(folder + "/root"), false, std::nullopt}))
        std::abort();
    RenewLists();
    gRegistryMarked = 0;
    gRegistryEntry = {};
    gComment[0] = 0;
}

SetTest::~SetTest()
{
    platform::file::removeAllMounts();
    std::filesystem::remove_all(folder);
    delete gFileList;
    delete gDatabaseList;
    gFileList = gDatabaseList = nullptr;
}

void SetTest::addCard(std::uint64_t capacity)
{
    const std::string path = folder + "/card";
    std::filesystem::remove_all(path);
    platform::file::removeAllMounts();
    if (!platform::file::addMount({u"", openFolder(folder + "/root"), false, std::nullopt}) ||
        !platform::file::addMount({u"Card", openFolder(path), true, capacity}))
        std::abort();
}

void SetTest::write(const WCHAR* path, const Bytes& bytes)
{
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
    ASSERT_EQ(written, bytes.size());
}

Bytes SetTest::read(const WCHAR* path)
{
    const HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    BY_HANDLE_FILE_INFORMATION information = {};
    GetFileInformationByHandle(file, &information);
    Bytes bytes(information.nFileSizeLow);
    DWORD delivered = 0;
    ReadFile(file, bytes.data(), information.nFileSizeLow, &delivered, nullptr);
    CloseHandle(file);
    EXPECT_EQ(delivered, bytes.size());
    return bytes;
}

bool SetTest::exists(const WCHAR* path)
{
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

Blobs blobsOf(ItemList& list)
{
    Blobs blobs;
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list.First(entry.bytes, &length); more; more = list.Next(entry.bytes, &length))
        blobs.emplace_back(entry.bytes, entry.bytes + length);
    return blobs;
}

std::vector<LoadedItem> itemsOf(ItemList* list)
{
    std::vector<LoadedItem> items;
    EntryBuffer entry;
    DWORD length = 0;
    for (BOOL more = list->First(entry.bytes, &length); more; more = list->Next(entry.bytes, &length))
        items.push_back({entry.name, EntryStartOffset(entry.bytes), EntryEndOffset(entry.bytes)});
    return items;
}

void PrintTo(const LoadedItem& item, std::ostream* out)
{
    for (const WCHAR c : item.name)
        *out << (c < 128 ? static_cast<char>(c) : '?');
    *out << " " << item.startOffset << ".." << item.endOffset;
}
