// opened_set.h - a set that is open for reading.
#pragma once

#include "archive/listed_set.h"

#include <memory>
#include <optional>
#include <string>

namespace archive {

// Sets that are open at the same time share the root folder of the set that was opened first.
class OpenedSet {
public:
    // If the platform has no root folder yet, `root` becomes the root folder. `root` is the path of a folder on the
    // host (the Linux system). If `root` is empty, the set's own folder becomes the root folder instead.
    explicit OpenedSet(const SetFiles& files, const std::string& root = "");

    // False if the set's folder or list file can't be opened. In that case mounted() and list() must not be called.
    bool isOpen() const { return trouble_.empty(); }
    const std::string& trouble() const { return trouble_; }  // such as "the list file can't be opened"

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
