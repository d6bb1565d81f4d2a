// failure.h - the reason why a command failed, and the exit codes.
#pragma once

#include <stdexcept>
#include <string>

namespace quillbox_device {

inline constexpr int exitGood = 0;
inline constexpr int exitFailed = 1;    // nothing was changed, unless the message says otherwise
inline constexpr int exitBadUsage = 2;  // or no such device

// Its text is a message for the user, in complete sentences.
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
