// mounted_folder.cpp - a card's room: what its files hold now, what a write may still take.
#include "mounted_folder.h"

#include "host_name.h"

#include <algorithm>

namespace platform::file {

MountedFolder::MountedFolder(std::u16string name, Descriptor folder, bool card, std::optional<std::uint64_t> capacity,
                             std::uint64_t used)
    : name_(std::move(name)), hostName_(text::toHostName(name_).value_or("")), folder_(std::move(folder)), card_(card),
      capacity_(capacity), used_(used)
{
}

std::uint64_t MountedFolder::takeRoom(std::uint64_t bytes)
{
    if (!capacity_)
        return bytes;
    std::uint64_t used = used_.load();
    std::uint64_t taken = 0;
    do {
        taken = used < *capacity_ ? std::min(bytes, *capacity_ - used) : 0;
    } while (!used_.compare_exchange_weak(used, used + taken));
    return taken;
}

void MountedFolder::giveBackRoom(std::uint64_t bytes)
{
    if (!capacity_)
        return;
    std::uint64_t used = used_.load();
    // Another process may have made a file longer unseen: never below nothing.
    while (!used_.compare_exchange_weak(used, used - std::min(used, bytes))) {
    }
}

}  // namespace platform::file
