// descriptor.h - owns an open descriptor of the host (the Linux system): a file, a folder, a socket.
#pragma once

#include <unistd.h>

#include <utility>

namespace platform::host {

// A negative number means that nothing is open. It can be a negative errno, and get() returns it.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int opened) : number_(opened) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }

    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }
    [[nodiscard]] int release() { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

}  // namespace platform::host
