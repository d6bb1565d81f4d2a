// second_start.cpp - one device, one window: a second start brings the first one's window to the front.

#include "second_start.h"

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

// One request and one answer a connection. The texts are UTF-16 as they lie in memory: both ends are this program.
struct Request {
    enum class Wish : std::uint32_t { HasWindow = 1, Front = 2 };
    Wish wish = Wish::Front;
    std::array<char16_t, 64> className{};  // with a NUL
    std::array<char16_t, 64> title{};
};
using Answer = std::uint8_t;

constexpr timeval Patience{.tv_sec = 5, .tv_usec = 0};

class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }

    [[nodiscard]] int get() const { return number_; }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }

private:
    int number_;
};

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

template <std::size_t Size>
void copyText(std::array<char16_t, Size>& to, std::u16string_view from)
{
    to[from.copy(to.data(), Size - 1)] = 0;
}

template <std::size_t Size>
const char16_t* textOrAny(std::array<char16_t, Size>& text)
{
    text.back() = 0;
    return text.front() ? text.data() : nullptr;
}

bool grant(Request& request)
{
    const HWND window = ::FindWindowW(textOrAny(request.className), textOrAny(request.title));
    if (request.wish == Request::Wish::HasWindow)
        return window != nullptr;
    // Not there yet? Then it is about to come to the front by itself.
    if (window)
        ::SetForegroundWindow(window);
    return true;
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
            if (peer.isOpen())
                answer(peer);
        }
    }

    static void answer(const Descriptor& peer)
    {
        limitPatience(peer);
        Request request;
        if (::recv(peer.get(), &request, sizeof request, 0) != static_cast<ssize_t>(sizeof request))
            return;
        const Answer granted = grant(request) ? 1 : 0;
        (void)::send(peer.get(), &granted, sizeof granted, MSG_NOSIGNAL);
    }

    Descriptor socket_;
    Descriptor end_;
    std::string path_;
    std::thread thread_;
};

class Found final : public window::OtherProcess {
public:
    explicit Found(const sockaddr_un& address) : address_(address) {}

    [[nodiscard]] bool hasWindow(std::u16string_view className, std::u16string_view title) override
    {
        Request request{.wish = Request::Wish::HasWindow};
        copyText(request.className, className);
        copyText(request.title, title);
        lastClass_ = request.className;
        lastTitle_ = request.title;
        return ask(request);
    }

    bool bringToFront() override
    {
        return ask({.wish = Request::Wish::Front, .className = lastClass_, .title = lastTitle_});
    }

    [[nodiscard]] bool answers() const { return connect().isOpen(); }

private:
    [[nodiscard]] Descriptor connect() const
    {
        Descriptor socket = openSocket();
        if (!socket.isOpen() || ::connect(socket.get(), generic(address_), sizeof address_) != 0)
            return Descriptor();
        return socket;
    }

    [[nodiscard]] bool ask(const Request& request) const
    {
        const Descriptor socket = connect();
        if (!socket.isOpen())
            return false;
        limitPatience(socket);
        Answer granted = 0;
        return ::send(socket.get(), &request, sizeof request, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof request) &&
               ::recv(socket.get(), &granted, sizeof granted, 0) == static_cast<ssize_t>(sizeof granted) &&
               granted == 1;
    }

    sockaddr_un address_;
    std::array<char16_t, 64> lastClass_{};
    std::array<char16_t, 64> lastTitle_{};
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
    if (!socket.isOpen() || !end.isOpen() || ::bind(socket.get(), generic(*address), sizeof *address) != 0 ||
        ::listen(socket.get(), 8) != 0)
        return nullptr;
    return std::make_unique<Listener>(std::move(socket), std::move(end), address->sun_path);
}

std::unique_ptr<window::OtherProcess> findFirstStart(const std::filesystem::path& deviceFolder)
{
    const std::optional<sockaddr_un> address = addressOf(deviceFolder);
    if (!address)
        return nullptr;
    auto found = std::make_unique<Found>(*address);
    return found->answers() ? std::move(found) : nullptr;
}

}  // namespace platform::display
