// text_patch.h - compares two text files, each from a set, and returns the differences as a unified diff.
#pragma once

#include "archive/item_content.h"

#include <string>

namespace quillbox_set {

struct FileInSet {
    const archive::OpenFile& data;
    const archive::Item& item;
};

// Reads both files into memory. If one of them isn't a text or is too large, returns a line with this reason in
// parentheses.
std::string textPatch(const FileInSet& older, const FileInSet& newer);

}  // namespace quillbox_set
