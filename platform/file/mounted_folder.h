// mounted_folder.h - one host folder of the name space, and how much its files may hold.
#pragma once

#include "host_calls.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform::file {

class MountedFolder {
public:
    MountedFolder(std::u16string name, Descriptor folder, bool card, std::optional<std::uint64_t> capacity,
                  std::uint64_t used);

    [[nodiscard]] const std::u16string& name() const { return name_; }
    [[nodiscard]] const std::string& hostName() const { return hostName_; }
    [[nodiscard]] int folder() const { return folder_.number(); }
    [[nodiscard]] bool isCard() const { return card_; }
    [[nodiscard]] bool hasCapacity() const { return capacity_.has_value(); }
    [[nodiscard]] std::uint64_t used() const { return used_.load(); }

    // Takes up to `bytes` of the room that is left and gives what it took; all of it without a capacity.
    [[nodiscard]] std::uint64_t takeRoom(std::uint64_t bytes);
    void giveBackRoom(std::uint64_t bytes);

private:
    std::u16string name_;
    std::string hostName_;
    Descriptor folder_;
    bool card_;
    std::optional<std::uint64_t> capacity_;
    std::atomic<std::uint64_t> used_;
};

// The mounts do not change while the program runs, so reading them takes no lock.

// The root; null before there is one.
[[nodiscard]] std::shared_ptr<MountedFolder> rootMount();

// The folder mounted under that name; null if there is none.
[[nodiscard]] std::shared_ptr<MountedFolder> findMount(std::u16string_view name);

// The nth folder mounted in the root, from 0; null behind the last.
[[nodiscard]] std::shared_ptr<MountedFolder> mountAt(std::size_t index);

// Does a mounted folder hide the root's entry of that host name?
[[nodiscard]] bool hiddenByMount(std::string_view hostName);

}  // namespace platform::file
