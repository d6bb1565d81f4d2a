#include "data_digest.h"

#include "background_thread.h"

#include "host/descriptor.h"
#include "kernel/run_progress.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <span>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace platform::device {

namespace {

// What the run wrote within a millisecond is still in the processor's cache when it is hashed, and so is the small
// piece.
constexpr std::size_t PieceBytes = 32768;
constexpr std::chrono::milliseconds LookAgain{1};

// The run has just made the file, so the ending is in capitals.
std::string dataFileOf(std::string listFile)
{
    constexpr std::string_view ListEnding = "QLT";
    return listFile.replace(listFile.size() - ListEnding.size(), ListEnding.size(), "QDT");
}

// Adds the bytes from `begin` to before `end` of the file. False if it can't be read that far.
bool addBytes(archive::Sha256& hash, int file, std::uint64_t begin, std::uint64_t end, std::vector<std::byte>& piece)
{
    while (begin < end) {
        const std::size_t wanted = std::min<std::uint64_t>(piece.size(), end - begin);
        const ssize_t bytes = ::pread(file, piece.data(), wanted, static_cast<off_t>(begin));
        if (bytes <= 0)
            return false;
        hash.add(std::span(piece).first(static_cast<std::size_t>(bytes)));
        begin += static_cast<std::uint64_t>(bytes);
    }
    return true;
}

}  // namespace

DataDigest::DataDigest(const Session& session, bool wanted) : session_(session)
{
    if (wanted)
        thread_ = startBackgroundThread([this, runBefore = kernel::runProgress().number] {
            try {
                follow(runBefore);
            } catch (const std::exception&) {
                // Without a digest of the run, the seal reads the whole file and meets the same failure.
            }
        });
}

DataDigest::~DataDigest()
{
    end();
}

std::optional<archive::FileDigest> DataDigest::finish()
{
    end();
    return digest_;
}

void DataDigest::end()
{
    if (!thread_.joinable())
        return;
    {
        const kernel::MutexLock lock(mutex_);
        over_ = true;
        changed_.notifyAll();
    }
    thread_.join();
}

// Waits a moment unless the run is over.
bool DataDigest::isOver()
{
    const kernel::MutexLock lock(mutex_);
    if (!over_)
        changed_.waitUntil(mutex_, std::chrono::steady_clock::now() + LookAgain);
    return over_;
}

void DataDigest::follow(unsigned runBefore)
{
    archive::Sha256 hash;
    std::vector<std::byte> piece(PieceBytes);
    host::Descriptor file;
    std::uint64_t done = 0;
    for (bool over = false; !over;) {
        over = isOver();  // before the number of bytes is read, so that it is the last one
        const kernel::RunProgress run = kernel::runProgress();
        if (run.number == runBefore || run.storedBytes == done)
            continue;
        if (!file)
            file = host::Descriptor(::open(dataFileOf(session_.hostPath(run.listPath)).c_str(), O_RDONLY | O_CLOEXEC));
        if (!addBytes(hash, file.get(), done, run.storedBytes, piece))
            return;
        done = run.storedBytes;
    }
    if (done != 0)
        digest_ = {hash.finish(), done};
}

}  // namespace platform::device
