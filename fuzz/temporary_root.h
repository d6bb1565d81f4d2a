// temporary_root.h - an empty folder as the root of the device, for targets that read files.
#pragma once

#include "file/name_space.h"

#include "ce/file.h"
#include "ce/handle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

// A target keeps one object as long as the process runs. The destructor removes the folder.
class TemporaryRoot {
public:
    TemporaryRoot()
    {
        const char* base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        folder_ = std::string(base) + "/quillbox-fuzz.XXXXXX";
        if (!mkdtemp(folder_.data()) ||
            !platform::file::addMount({u"", open(folder_.c_str(), O_RDONLY | O_DIRECTORY), false, std::nullopt}))
            std::abort();
    }
    TemporaryRoot(const TemporaryRoot&) = delete;
    TemporaryRoot& operator=(const TemporaryRoot&) = delete;
    ~TemporaryRoot()
    {
        std::error_code ignored;  // a folder that can't be removed is small
        std::filesystem::remove_all(folder_, ignored);
    }

    static void write(const WCHAR* path, const std::uint8_t* bytes, std::size_t size)
    {
        const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        if (!WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr) || written != size)
            std::abort();
        CloseHandle(file);
    }

private:
    std::string folder_;
};
