// demonstration_content.h - the content of a fresh device. The build generates the functions from res/demonstration.
#pragma once

#include "ce/registry.h"
#include "ce/store.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace platform::device {

struct DemonstrationFile {
    const char* path;       // below the device's folder
    std::int64_t modified;  // seconds since 1970
    bool inRom;
    std::string_view content;
};

struct DemonstrationValue {
    HKEY root;
    const WCHAR* key;
    const WCHAR* name;  // null for the key's default value
    DWORD type;
    std::string_view data;
};

struct DemonstrationDatabase {
    const WCHAR* name;
    DWORD type;
    std::span<const SORTORDERSPEC> orders;
    std::vector<std::vector<CEPROPVAL>> records;
};

// All pointers are valid for the life of the process.
[[nodiscard]] std::vector<DemonstrationFile> demonstrationFiles();
[[nodiscard]] std::vector<DemonstrationValue> demonstrationRegistry();
[[nodiscard]] std::vector<DemonstrationDatabase> demonstrationDatabases();

}  // namespace platform::device
