#include "start/restore_request.h"

#include <utility>

namespace platform::display {

void RestoreRequest::make(std::u16string listFile)
{
    const std::lock_guard lock(mutex_);
    listFile_ = std::move(listFile);
    if (made_)
        made_();
}

std::optional<std::u16string> RestoreRequest::take()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(listFile_, std::nullopt);
}

void RestoreRequest::setListener(std::function<void()> made)
{
    const std::lock_guard lock(mutex_);
    made_ = std::move(made);
    if (made_ && listFile_)
        made_();
}

}  // namespace platform::display
