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

// The thread looks for new bytes every millisecond, so that they are usually still in the processor's cache when they
// are hashed. The buffer for a piece is small enough to stay in the cache too.
constexpr std::size_t PieceBytes = 32768;
constexpr std::chrono::milliseconds LookAgain{1};

// Returns the path of the data file that belongs to the list file of a new set. The names of a new set are in capitals,
// so the path of the list file ends in QLT and not in qlt.
std::string dataFileOf(std::string listFile)
{
    constexpr std::string_view ListEnding = "QLT";
    return listFile.replace(listFile.size() - ListEnding.size(), ListEnding.size(), "QDT");
}

// Adds the bytes from offset `begin` up to offset `end`, without the byte at `end`, to the hash. Returns false if they
// can't be read.
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
                // Without a digest, sealing the set reads the whole file. If this read fails too, sealing reports the
                // failure.
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

// Returns true if end() was called. If it wasn't called yet, first waits up to LookAgain for the call of end().
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
        over = isOver();  // asked first: once the run is over, the number of bytes below is final
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
