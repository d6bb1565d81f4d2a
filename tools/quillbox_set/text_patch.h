// text_patch.h - two text files of sets as a unified diff.
#pragma once

#include "archive/item_content.h"

#include <string>

namespace quillbox_set {

struct FileInSet {
    const archive::OpenFile& data;
    const archive::Item& item;
};

// Both files are in memory. A line in parentheses if one of them isn't a text, or is too large.
std::string textPatch(const FileInSet& older, const FileInSet& newer);

}  // namespace quillbox_set
