#include "archive/opened_set.h"

#include "archive/fault_text.h"
#include "screen_text/screen_text.h"

namespace archive {

OpenedSet::OpenedSet(const SetFiles& files, const std::string& root)
    : files_(files), mount_(files, root.empty() ? files.folder : root)
{
    if (!mount_) {
        const std::string_view folder = root.empty() ? files.folder : root;
        trouble_ = "a folder can't be opened: " + screen_text::onScreen(folder);
        return;
    }
    list_ = std::make_unique<ListedSet>(*mount_);
    if (!list_->isOpen())
        trouble_ = notOpened("the list file", list_->openError());
}

}  // namespace archive
