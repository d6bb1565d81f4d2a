// failure.h - why a command wasn't done.
#pragma once

#include <stdexcept>
#include <string>

namespace quillbox_device {

inline constexpr int exitGood = 0;
inline constexpr int exitFailed = 1;    // nothing was changed, unless the sentence says so
inline constexpr int exitBadUsage = 2;  // or no such device

// Its text is a sentence for the user.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& sentence, int exitCode = exitFailed)
        : std::runtime_error(sentence), exitCode_(exitCode)
    {
    }

    [[nodiscard]] int exitCode() const { return exitCode_; }

private:
    int exitCode_;
};

}  // namespace quillbox_device
