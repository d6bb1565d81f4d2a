// opened_set.h - a set that is open for reading.
#pragma once

#include "archive/listed_set.h"

#include <memory>
#include <optional>
#include <string>

namespace archive {

// Several sets that are open at the same time have the root of the first one.
class OpenedSet {
public:
    // The folder `root` becomes the root of the name space. Empty: the set's own folder.
    explicit OpenedSet(const SetFiles& files, const std::string& root = "");

    // False if the set has vanished or there is no permission. Then only trouble() can be called.
    bool isOpen() const { return trouble_.empty(); }
    const std::string& trouble() const { return trouble_; }  // "the list file can't be opened"

    const SetFiles& files() const { return files_; }
    const MountedSet& mounted() const { return *mount_; }
    ListedSet& list() const { return *list_; }

private:
    SetFiles files_;
    SetMount mount_;
    std::unique_ptr<ListedSet> list_;
    std::string trouble_;
};

}  // namespace archive
