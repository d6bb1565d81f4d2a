// registry_content.h - writes the registry's tables as the text of a registry file, and reads such a text into the
// tables.
#pragma once

#include "registry/registry_text_reader.h"
#include "registry/registry_text_writer.h"

#include "database/connection.h"

#include <optional>

namespace platform::registry {

// Writes all keys and values of the open registry. No other thread can change the registry meanwhile. Returns false if
// the output refused bytes or the tables can't be read.
[[nodiscard]] bool writeContent(const RegistryTextWriter::Output& output);

// What happens to keys and values that the text doesn't contain.
enum class Unnamed { Removed, Kept };

struct ContentRead {
    database::Step step = database::Step::Done;  // the result of the last change to the tables
    std::optional<RegistryTextFault> fault;      // what is wrong with the text

    [[nodiscard]] bool good() const { return step == database::Step::Done && !fault; }
};

// Reads a text into the open registry, in one transaction: all of it, or nothing.
[[nodiscard]] ContentRead readContent(const RegistryTextSource& source, Wholeness wholeness, Unnamed unnamed);

}  // namespace platform::registry
