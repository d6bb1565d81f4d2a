// restore_request.h - a request to show a set in the window. The request is made when the user opens the set in the
// file manager.
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace platform::display {

// Any thread may call these functions. A new request replaces an earlier one that wasn't taken yet.
class RestoreRequest {
public:
    // `listFile` is the path of the set's list file on the device.
    void make(std::u16string listFile);
    // Returns the request's list file and removes the request. Returns nothing if there is no request.
    std::optional<std::u16string> take();
    // If there is a request that wasn't taken yet, `made` is called at once. Later `made` is called for each new
    // request, on the thread that makes the request. `made` must not call this object, whose mutex is held during the
    // call. An empty function removes the listener.
    void setListener(std::function<void()> made);

private:
    std::mutex mutex_;  // held while the listener runs, so a removed listener never runs
    std::optional<std::u16string> listFile_;
    std::function<void()> made_;
};

}  // namespace platform::display
