// refusal.h - the exception that says why a device can't be opened. openDevice catches it and returns an OpenError.
// Other components can catch it as a std::runtime_error.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace platform::device {

class Refusal : public std::runtime_error {
public:
    explicit Refusal(const std::string& sentence, bool inUse = false) : std::runtime_error(sentence), inUse_(inUse) {}

    [[nodiscard]] bool inUse() const { return inUse_; }

private:
    bool inUse_;
};

inline std::string quoted(const std::filesystem::path& path)
{
    return "\"" + path.string() + "\"";
}

// Throws a Refusal with a sentence such as "The folder ... can't be read: Permission denied.". `error` is an errno.
[[noreturn]] inline void refuse(const std::string& what, int error)
{
    throw Refusal(what + ": " + std::generic_category().message(error) + ".");
}

}  // namespace platform::device
