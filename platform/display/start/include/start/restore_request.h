// restore_request.h - a set that the user opened in the file manager, for the window that shows it.
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace platform::display {

// Any thread may use it. A later request replaces one that wasn't taken yet.
class RestoreRequest {
public:
    // `listFile` is the set's list on the device.
    void make(std::u16string listFile);
    // Empty without a request.
    std::optional<std::u16string> take();
    // `made` is called at once if a request waits, and after each one, on the thread that makes it. An empty function
    // ends that.
    void setListener(std::function<void()> made);

private:
    std::mutex mutex_;  // held while the listener runs, so that none runs after it was removed
    std::optional<std::u16string> listFile_;
    std::function<void()> made_;
};

}  // namespace platform::display
