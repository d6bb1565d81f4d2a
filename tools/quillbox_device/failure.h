// failure.h - the reason why a command failed, and the exit codes.
#pragma once

#include <stdexcept>
#include <string>

namespace quillbox_device {

inline constexpr int exitGood = 0;
inline constexpr int exitFailed = 1;    // nothing was changed, unless the message says otherwise
inline constexpr int exitBadUsage = 2;  // also if there is no such device

// Ends a command that fails. The text of the exception is a message for the user, in complete sentences.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sentence, int exitCode = exitFailed)
        : std::runtime_error(sentence), exitCode_(exitCode)
    {
    }

    int exitCode() const { return exitCode_; }

private:
    int exitCode_;
};

}  // namespace quillbox_device
