// second_start.h - one device, one window: a second start brings the first one's window to the front.
//
// The process that has a device open listens on a socket in the user's runtime folder, named after the
// device's folder; a start that finds the device in use asks there. Knows nothing of the toolkit.
#pragma once

#include <filesystem>
#include <memory>

namespace platform::display {

// Answers for this process's windows, on a thread of its own, as long as it lives.
class FirstStart {
public:
    virtual ~FirstStart() = default;
};

// Only the device's owner calls it: what an earlier owner left behind at the socket's place is replaced.
// Null if there is no folder for the socket; then a second start just finds the device in use.
[[nodiscard]] std::unique_ptr<FirstStart> answerSecondStarts(const std::filesystem::path& deviceFolder);

// Brings the window of the process that has the device open to the front. False if no process answers for the device.
[[nodiscard]] bool bringFirstStartToFront(const std::filesystem::path& deviceFolder);

}  // namespace platform::display
