// second_start.h - lets a second process of Quillbox with the same device bring the window of the first process to the
// front. The second process needs no window of its own.
//
// The process that has a device open listens on a socket in the user's runtime folder, or in a private folder in /tmp.
// The socket's name contains a hash of the path of the device's folder. A process that finds the device in use sends
// its request to that socket.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform::display {

// Answers requests on a thread of its own until the object is destroyed.
class FirstStart {
public:
    virtual ~FirstStart() = default;
};

// Opens a set in the window of the first process. Returns a sentence for the user on failure, otherwise an empty text.
using SetOpener = std::function<std::string(const std::filesystem::path& listFile)>;

// Begins to answer the requests of second processes. `openSet` is called on the answering thread if a request names a
// set. Call answerSecondStarts only while this process has the device open. No other process has the device open at
// that time, so an existing socket is one that a killed process has left. This function replaces it. Returns null if
// the socket can't be made, for example because there is no safe folder for it. In that case a second process finds
// that the device is in use, but can't bring the window to the front.
[[nodiscard]] std::unique_ptr<FirstStart> answerSecondStarts(const std::filesystem::path& deviceFolder,
                                                             SetOpener openSet = {});

// Asks the process that has the device open to bring its window to the front, and to open the set if one is named.
// Returns the text that the SetOpener of that process returned, or an empty text if that process called no SetOpener.
// Returns nothing if no process answers in time.
[[nodiscard]] std::optional<std::string> askFirstStart(const std::filesystem::path& deviceFolder,
                                                       const std::filesystem::path& set = {});

}  // namespace platform::display
