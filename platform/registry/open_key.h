// open_key.h - the object to which the handle of an open registry key (HKEY) refers. RegCreateKeyExW creates it.
#pragma once

#include "kernel/handle_table.h"

#include <cstdint>

namespace platform::registry {

class OpenKey final : public kernel::Object {
public:
    OpenKey(std::int64_t row, int level) : row_(row), level_(level) {}

    // Only RegCloseKey closes a key.
    [[nodiscard]] bool takesCloseHandle() const override { return false; }

    [[nodiscard]] std::int64_t row() const { return row_; }
    [[nodiscard]] int level() const { return level_; }  // number of levels below its predefined key

private:
    std::int64_t row_;
    int level_;
};

}  // namespace platform::registry
