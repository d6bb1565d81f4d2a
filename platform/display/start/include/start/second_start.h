// second_start.h - one device, one window: a second start brings the first start's window to the front.
//
// The process that has a device open listens on a socket in the user's runtime folder. The socket is named after the
// device's folder. A start that finds the device in use sends its request there.
#pragma once

#include <filesystem>
#include <memory>

namespace platform::display {

// Answers requests on a thread of its own until it is destroyed.
class FirstStart {
public:
    virtual ~FirstStart() = default;
};

// Call it only while this process has the device open: it replaces a socket that a killed process left.
// Null if there is no safe folder for the socket. A second start then only finds the device in use.
[[nodiscard]] std::unique_ptr<FirstStart> answerSecondStarts(const std::filesystem::path& deviceFolder);

// Brings the window of the process that has the device open to the front. False if no process answers.
[[nodiscard]] bool bringFirstStartToFront(const std::filesystem::path& deviceFolder);

}  // namespace platform::display
