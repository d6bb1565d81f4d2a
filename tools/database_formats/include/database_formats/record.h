// record.h - one record on its way in: its properties, and the texts and bytes that they point to.
#pragma once

#include "ce/store.h"

#include <deque>
#include <span>
#include <string>
#include <vector>

namespace database_formats {

// Throws a FormatFault for a text with a NUL in it, a blob of 4 GiB and more, flags that no stored property can have,
// and for more properties than a record can hold.
class Record {
public:
    // Of a type that is neither text nor blob.
    void add(CEPROPID id, WORD flags, const CEVALUNION& value);
    void addText(CEPROPID id, WORD flags, std::u16string text);
    void addBlob(CEPROPID id, WORD flags, std::string bytes);

    // A copy of a property that stands elsewhere, with its text or bytes.
    void addCopy(const CEPROPVAL& property);

    [[nodiscard]] std::span<const CEPROPVAL> properties() const { return properties_; }

private:
    std::vector<CEPROPVAL> properties_;
    std::deque<std::u16string> texts_;
    std::deque<std::string> blobs_;
};

}  // namespace database_formats
