// second_start.cpp - one device, one window: a second start brings the first one's window to the front.

#include "qt/second_start.h"

#include "host/descriptor.h"

#include "ce/window.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace platform::display {

namespace {

using host::Descriptor;

// A connection is the wish for the front; the answer is one byte.
constexpr std::uint8_t Granted = 1;

constexpr timeval Patience{.tv_sec = 5, .tv_usec = 0};

// Nobody but the user may stand in it.
bool isOwnFolder(const std::string& folder)
{
    struct stat status {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::getuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

std::optional<std::string> runtimeFolder()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder && *folder == '/' && isOwnFolder(folder))
        return folder;
    std::string own = "/tmp/quillbox-" + std::to_string(::getuid());
    (void)::mkdir(own.c_str(), S_IRWXU);  // exists already? The check decides.
    if (!isOwnFolder(own))
        return std::nullopt;
    return own;
}

// The same for every way to write the folder's name, on every start.
std::string hashOf(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::path whole = std::filesystem::canonical(folder, error);
    if (error)
        whole = folder;
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
    for (const char byte : whole.native())
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(hash));
    return text.data();
}

std::optional<sockaddr_un> addressOf(const std::filesystem::path& deviceFolder)
{
    const std::optional<std::string> folder = runtimeFolder();
    if (!folder)
        return std::nullopt;
    const std::string path = *folder + "/quillbox-" + hashOf(deviceFolder);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return std::nullopt;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

Descriptor openSocket()
{
    return Descriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
}

void limitPatience(const Descriptor& socket)
{
    (void)::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &Patience, sizeof Patience);
    (void)::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &Patience, sizeof Patience);
}

const sockaddr* generic(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

// Not there yet? Then it is about to come to the front by itself.
void comeToFront()
{
    if (const HWND window = ::FindWindowW(nullptr, nullptr))
        ::SetForegroundWindow(window);
}

class Listener final : public FirstStart {
public:
    Listener(Descriptor socket, Descriptor end, std::string path)
        : socket_(std::move(socket)), end_(std::move(end)), path_(std::move(path)), thread_([this] { serve(); })
    {
    }

    ~Listener() override
    {
        const std::uint64_t one = 1;
        (void)!::write(end_.get(), &one, sizeof one);
        thread_.join();
        ::unlink(path_.c_str());
    }

private:
    void serve()
    {
        while (true) {
            std::array<pollfd, 2> ready{{{socket_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}}};
            if (::poll(ready.data(), ready.size(), -1) < 0)
                continue;
            if (ready[1].revents)
                return;
            const Descriptor peer(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (peer)
                answer(peer);
        }
    }

    static void answer(const Descriptor& peer)
    {
        limitPatience(peer);
        comeToFront();
        (void)::send(peer.get(), &Granted, sizeof Granted, MSG_NOSIGNAL);
    }

    Descriptor socket_;
    Descriptor end_;
    std::string path_;
    std::thread thread_;
};

}  // namespace

std::unique_ptr<FirstStart> answerSecondStarts(const std::filesystem::path& deviceFolder)
{
    const std::optional<sockaddr_un> address = addressOf(deviceFolder);
    if (!address)
        return nullptr;
    (void)::unlink(address->sun_path);  // left by a process that was killed
    Descriptor socket = openSocket();
    Descriptor end(::eventfd(0, EFD_CLOEXEC));
    if (!socket || !end || ::bind(socket.get(), generic(*address), sizeof *address) != 0 ||
        ::listen(socket.get(), 8) != 0)
        return nullptr;
    return std::make_unique<Listener>(std::move(socket), std::move(end), address->sun_path);
}

bool bringFirstStartToFront(const std::filesystem::path& deviceFolder)
{
    const std::optional<sockaddr_un> address = addressOf(deviceFolder);
    const Descriptor socket = openSocket();
    if (!address || !socket || ::connect(socket.get(), generic(*address), sizeof *address) != 0)
        return false;
    limitPatience(socket);
    std::uint8_t answer = 0;
    return ::recv(socket.get(), &answer, sizeof answer, 0) == static_cast<ssize_t>(sizeof answer) && answer == Granted;
}

}  // namespace platform::display
