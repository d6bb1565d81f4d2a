// second_start.h - one device, one window: a second start brings the first start's window to the front.
//
// The process that has a device open listens on a socket in the user's runtime folder. The socket is named after the
// device's folder. A start that finds the device in use sends its request there.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform::display {

// Answers requests on a thread of its own until it is destroyed.
class FirstStart {
public:
    virtual ~FirstStart() = default;
};

// Opens a set in the window of the first start. Returns a sentence for the user on failure, otherwise an empty text.
using SetOpener = std::function<std::string(const std::filesystem::path& listFile)>;

// `openSet` is called on the thread that answers, for a second start that names a set.
// Call it only while this process has the device open: it replaces a socket that a killed process left.
// Null if there is no safe folder for the socket. A second start then only finds the device in use.
[[nodiscard]] std::unique_ptr<FirstStart> answerSecondStarts(const std::filesystem::path& deviceFolder,
                                                             SetOpener openSet = {});

// Brings the window of the process that has the device open to the front, and opens the set there if one is named.
// Empty if no process answers, otherwise what its SetOpener returned.
[[nodiscard]] std::optional<std::string> askFirstStart(const std::filesystem::path& deviceFolder,
                                                       const std::filesystem::path& set = {});

}  // namespace platform::display
