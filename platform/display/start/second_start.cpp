#include "start/second_start.h"

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

namespace platform::display {

namespace {

using host::Descriptor;

// The first byte of each request and of each answer. In a request, the path of a set can follow. In an answer, a
// sentence for the user can follow.
constexpr char Granted = 1;
constexpr std::size_t LongestMessage = 8192;

// The time limit for each send and receive. The limit prevents a stopped process from blocking the other process for
// ever.
constexpr timeval SocketTimeout{.tv_sec = 5, .tv_usec = 0};

// Returns true if only this user has access to the folder. If other users had access, one of them could create the
// socket in the folder.
bool isPrivateFolder(const std::string& folder)
{
    struct stat status {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::getuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

std::optional<std::string> runtimeFolder()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
    if (const char* folder = std::getenv("XDG_RUNTIME_DIR"); folder && *folder == '/' && isPrivateFolder(folder))
        return folder;
    std::string own = "/tmp/quillbox-" + std::to_string(::getuid());
    (void)::mkdir(own.c_str(), S_IRWXU);  // It may exist already. The check below decides.
    if (!isPrivateFolder(own))
        return std::nullopt;
    return own;
}

// FNV-1a over the canonical path, so that all spellings of the folder's path have the same hash.
std::string hashOf(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::path whole = std::filesystem::canonical(folder, error);
    if (error)
        whole = folder;
    std::uint64_t hash = 0xCBF29CE484222325;
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

void setTimeouts(const Descriptor& socket)
{
    (void)::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &SocketTimeout, sizeof SocketTimeout);
    (void)::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &SocketTimeout, sizeof SocketTimeout);
}

const sockaddr* generic(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

// Does nothing if the program has no window yet, because a new window appears in front anyway.
void bringWindowToFront()
{
    if (const HWND window = ::FindWindowW(nullptr, nullptr))
        ::SetForegroundWindow(window);
}

void send(const Descriptor& peer, const std::string& text)
{
    const std::string message = (Granted + text).substr(0, LongestMessage);
    (void)::send(peer.get(), message.data(), message.size(), MSG_NOSIGNAL);
}

// Returns the text of the message, or nothing if no valid message arrives.
std::optional<std::string> receive(const Descriptor& peer)
{
    std::string message(LongestMessage, 0);
    const ssize_t bytes = ::recv(peer.get(), message.data(), message.size(), 0);
    if (bytes < 1 || message.front() != Granted)
        return std::nullopt;
    return message.substr(1, static_cast<std::size_t>(bytes) - 1);
}

class Listener final : public FirstStart {
public:
    Listener(Descriptor socket, Descriptor end, std::string path, SetOpener openSet)
        : socket_(std::move(socket)), end_(std::move(end)), path_(std::move(path)), openSet_(std::move(openSet)),
          thread_([this] { serve(); })
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

    void answer(const Descriptor& peer) const
    {
        setTimeouts(peer);
        const std::optional<std::string> set = receive(peer);
        if (!set)
            return;
        bringWindowToFront();
        send(peer, !set->empty() && openSet_ ? openSet_(*set) : "");
    }

    Descriptor socket_;
    Descriptor end_;
    std::string path_;
    SetOpener openSet_;
    std::thread thread_;
};

}  // namespace

std::unique_ptr<FirstStart> answerSecondStarts(const std::filesystem::path& deviceFolder, SetOpener openSet)
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
    return std::make_unique<Listener>(std::move(socket), std::move(end), address->sun_path, std::move(openSet));
}

std::optional<std::string> askFirstStart(const std::filesystem::path& deviceFolder, const std::filesystem::path& set)
{
    const std::optional<sockaddr_un> address = addressOf(deviceFolder);
    const Descriptor socket = openSocket();
    if (!address || !socket || ::connect(socket.get(), generic(*address), sizeof *address) != 0)
        return std::nullopt;
    setTimeouts(socket);
    send(socket, set.string());
    return receive(socket);
}

}  // namespace platform::display
