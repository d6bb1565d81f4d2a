// record.h - a record that is being read: its properties, and the texts and bytes that they point to.
#pragma once

#include "ce/store.h"

#include <deque>
#include <span>
#include <string>
#include <vector>

namespace database_formats {

// Each call that adds a property throws a FormatFault if no record can have the property. Examples are a text with a
// NUL in it, a blob of 4 GiB or more, flags that a stored property can't have, and a property beyond the first 65535.
class Record {
public:
    // Adds a value that is neither a text nor a blob.
    void add(CEPROPID id, WORD flags, const CEVALUNION& value);
    void addText(CEPROPID id, WORD flags, std::u16string text);
    void addBlob(CEPROPID id, WORD flags, std::string bytes);

    // Copies the property with its text or bytes.
    void addCopy(const CEPROPVAL& property);

    std::span<const CEPROPVAL> properties() const { return properties_; }

private:
    std::vector<CEPROPVAL> properties_;
    std::deque<std::u16string> texts_;
    std::deque<std::string> blobs_;
};

}  // namespace database_formats
