#include "requests.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace quillbox_mount {

namespace {

// How many seconds the kernel may cache an answer. The mounted files never change, so the kernel needs each answer only
// once.
constexpr double Forever = 365.0 * 24 * 60 * 60;
constexpr blksize_t FilePreferredBytes = 131072;
// The preferred block size that the mount reports for folders. The C library of a client allocates a buffer of this
// size to read a folder. Once this buffer was freed, the library keeps freed memory up to this size and reuses it for
// later buffers, such as the buffer of 128 KB that cp allocates for each file. With a smaller preferred size, cp would
// map and unmap that buffer for each file.
constexpr blksize_t FolderPreferredBytes = 262144;
constexpr std::size_t MostParts = 512;  // the most parts of one answer. The kernel accepts 1024 (IOV_MAX).
constexpr mode_t FolderMode = S_IFDIR | 0555;
constexpr mode_t FileMode = S_IFREG | 0444;

RequestState& stateOf(fuse_req_t request)
{
    return *static_cast<RequestState*>(fuse_req_userdata(request));
}

ShownSets& setsOf(fuse_req_t request)
{
    return stateOf(request).sets;
}

// Calls `act`. If `act` returns 0, it has answered the request itself. Otherwise answers with the error that `act`
// returns, or with the error for the exception that it throws.
template <class Act>
void answer(fuse_req_t request, const Act& act)
{
    int error = EIO;
    try {
        error = act();
    } catch (const std::bad_alloc&) {
        error = ENOMEM;
    } catch (const std::exception&) {
        error = EIO;
    }
    if (error != 0)
        fuse_reply_err(request, error);
}

struct stat statusOf(Place place, const Attributes& attributes)
{
    struct stat status {};
    status.st_ino = inodeOf(place);
    status.st_mode = attributes.isFolder ? FolderMode : FileMode;
    status.st_nlink = 1;  // 1 also for a folder, because its real number isn't known
    static const uid_t user = ::getuid();
    static const gid_t group = ::getgid();
    status.st_uid = user;
    status.st_gid = group;
    status.st_size = static_cast<off_t>(attributes.bytes);
    status.st_blocks = static_cast<blkcnt_t>((attributes.bytes + 511) / 512);
    status.st_blksize = attributes.isFolder ? FolderPreferredBytes : FilePreferredBytes;
    status.st_mtim.tv_sec = status.st_ctim.tv_sec = status.st_atim.tv_sec = attributes.changed;
    return status;
}

// Fills `entry`. Returns 0 or an errno. If the size isn't known yet, the attributes get a timeout of 0, so that the
// kernel asks for them again when it needs the size.
int entryOf(ShownSets& sets, Place place, fuse_entry_param& entry)
{
    Attributes attributes{};
    if (const int error = sets.attributes(place, Sizes::IfQuick, attributes))
        return error;
    entry = {};
    entry.ino = inodeOf(place);
    entry.attr = statusOf(place, attributes);
    entry.attr_timeout = attributes.areFinal ? Forever : 0;
    entry.entry_timeout = Forever;
    return 0;
}

void begin(void* data, fuse_conn_info* connection)
{
    auto& state = *static_cast<RequestState*>(data);
    state.mayLeaveOutOpen = (connection->capable & FUSE_CAP_NO_OPEN_SUPPORT) != 0;
    state.mayLeaveOutOpenDir = (connection->capable & FUSE_CAP_NO_OPENDIR_SUPPORT) != 0;
    connection->want &= ~static_cast<unsigned>(FUSE_CAP_AUTO_INVAL_DATA);
}

void find(fuse_req_t request, fuse_ino_t parent, const char* name)
{
    answer(request, [&] {
        Place found;
        fuse_entry_param entry{};
        const int error = setsOf(request).find(placeOf(parent), name, found);
        entry.entry_timeout = Forever;  // a name that doesn't exist will never exist
        if (error == EIO)
            return error;
        if (const int unread = error == 0 ? entryOf(setsOf(request), found, entry) : 0)
            return unread;
        fuse_reply_entry(request, &entry);
        return 0;
    });
}

void getAttributes(fuse_req_t request, fuse_ino_t inode, fuse_file_info* /*file*/)
{
    answer(request, [&] {
        Attributes attributes{};
        if (const int error = setsOf(request).attributes(placeOf(inode), Sizes::All, attributes))
            return error;
        const struct stat status = statusOf(placeOf(inode), attributes);
        fuse_reply_attr(request, &status, attributes.areFinal ? Forever : 0);
        return 0;
    });
}

// ENOSYS tells the kernel that it can open and close files without a request.
void open(fuse_req_t request, fuse_ino_t /*inode*/, fuse_file_info* file)
{
    file->keep_cache = 1;
    if (stateOf(request).mayLeaveOutOpen)
        fuse_reply_err(request, ENOSYS);
    else
        fuse_reply_open(request, file);
}

void openFolder(fuse_req_t request, fuse_ino_t /*inode*/, fuse_file_info* file)
{
    file->keep_cache = 1;
    file->cache_readdir = 1;
    if (stateOf(request).mayLeaveOutOpenDir)
        fuse_reply_err(request, ENOSYS);
    else
        fuse_reply_open(request, file);
}

void read(fuse_req_t request, fuse_ino_t inode, std::size_t bytes, off_t offset, fuse_file_info* /*file*/)
{
    RequestState& state = stateOf(request);  // `request` can't be used after the answer
    answer(request, [&] {
        Content content;
        const auto start = static_cast<std::uint64_t>(offset);
        if (const int error = setsOf(request).read(placeOf(inode), start, bytes, content))
            return error;
        if (content.text) {
            fuse_bufvec buffer = bufferOf(bytes);
            buffer.buf[0].flags = static_cast<fuse_buf_flags>(FUSE_BUF_IS_FD | FUSE_BUF_FD_SEEK | FUSE_BUF_FD_RETRY);
            buffer.buf[0].fd = content.text->file.get();
            buffer.buf[0].pos = offset;
            fuse_reply_data(request, &buffer, FUSE_BUF_SPLICE_MOVE);
            return 0;
        }
        std::vector<iovec> parts;
        for (const Piece& piece : content.pieces)
            parts.push_back({const_cast<std::byte*>(piece.block->data()) + piece.start, piece.bytes});
        if (!content.note.empty())
            parts.push_back({const_cast<char*>(content.note.data()), content.note.size()});
        std::vector<std::byte> gathered;
        if (parts.size() > MostParts) {
            for (const iovec& part : parts) {
                const auto* const first = static_cast<const std::byte*>(part.iov_base);
                gathered.insert(gathered.end(), first, first + part.iov_len);
            }
            parts = {{gathered.data(), gathered.size()}};
        }
        fuse_reply_iov(request, parts.data(), static_cast<int>(parts.size()));
        return 0;
    });
    state.ahead.after(state.session, state.sets, placeOf(inode));
}

// Collects the entries of a folder for one answer, up to a number of bytes.
class Listing {
public:
    Listing(fuse_req_t request, std::size_t limit)
        : request_(request), bytes_(std::make_unique_for_overwrite<char[]>(limit)), limit_(limit)
    {
    }

    // Returns false if there is no room for the entry. `next` is the offset of the entry that follows this one.
    bool add(const char* name, const fuse_entry_param& entry, bool withAttributes, off_t next)
    {
        char* const at = bytes_.get() + used_;
        const std::size_t room = limit_ - used_;
        const std::size_t needed = withAttributes ? fuse_add_direntry_plus(request_, at, room, name, &entry, next)
                                                  : fuse_add_direntry(request_, at, room, name, &entry.attr, next);
        if (needed > room)
            return false;
        used_ += needed;
        return true;
    }

    void reply() const { fuse_reply_buf(request_, bytes_.get(), used_); }

private:
    fuse_req_t request_;
    std::unique_ptr<char[]> bytes_;
    std::size_t limit_;
    std::size_t used_ = 0;
};

// Sets `name` and `entry` to the folder's entry of this number. Entry 0 is ".", entry 1 is "..", and the children of
// the folder follow. In the kernel's requests the number is the offset of the entry.
int entryAt(ShownSets& sets, Place folder, std::size_t number, bool withAttributes, std::string& name,
            fuse_entry_param& entry)
{
    entry = {};
    entry.attr.st_mode = FolderMode;
    if (number < 2) {
        name = number == 0 ? "." : "..";
        entry.attr.st_ino = inodeOf(number == 0 ? folder : sets.parent(folder));
        return 0;
    }
    ShownSets::Child child;
    if (const int error = sets.child(folder, number - 2, child))
        return error;
    name = child.name;
    if (withAttributes)
        return entryOf(sets, child.place, entry);
    Attributes attributes{};
    const int error = sets.attributes(child.place, Sizes::None, attributes);
    entry.attr = statusOf(child.place, attributes);
    return error;
}

// Determines the sizes of some files that follow `file` in its set. Called after the answer to a listing was sent, so
// the client can use this answer meanwhile. Only one thread at a time determines sizes, because two threads would
// measure the same files.
void measureAfter(RequestState& state, Place file) noexcept
{
    if (state.isMeasuring.test_and_set())
        return;
    try {
        state.sets.measureAfter(file);
    } catch (const std::exception&) {
        // There is too little memory. The next listing tries again.
    }
    state.isMeasuring.clear();
}

void list(fuse_req_t request, fuse_ino_t folder, std::size_t bytes, off_t offset, bool withAttributes)
{
    RequestState& state = stateOf(request);  // `request` can't be used after the answer
    Place reached;
    answer(request, [&] {
        Listing listing(request, bytes);
        std::string name;
        fuse_entry_param entry{};
        for (auto number = static_cast<std::size_t>(offset);; number++) {
            const int error = entryAt(state.sets, placeOf(folder), number, withAttributes, name, entry);
            if (error != 0 && error != ENOENT)
                return error;
            if (error == ENOENT || !listing.add(name.c_str(), entry, withAttributes, static_cast<off_t>(number + 1)))
                break;
            if (S_ISREG(entry.attr.st_mode))
                reached = placeOf(entry.ino);
        }
        if (reached.isTop())
            reached = placeOf(folder);
        listing.reply();
        return 0;
    });
    if (withAttributes && !reached.isTop())
        measureAfter(state, reached);
}

void listNames(fuse_req_t request, fuse_ino_t folder, std::size_t bytes, off_t offset, fuse_file_info* /*file*/)
{
    list(request, folder, bytes, offset, false);
}

void listWithAttributes(fuse_req_t request, fuse_ino_t folder, std::size_t bytes, off_t offset,
                        fuse_file_info* /*file*/)
{
    list(request, folder, bytes, offset, true);
}

}  // namespace

const fuse_lowlevel_ops& requests()
{
    static const fuse_lowlevel_ops all = [] {
        fuse_lowlevel_ops made{};
        made.init = begin;
        made.lookup = find;
        made.getattr = getAttributes;
        made.open = open;
        made.read = read;
        made.opendir = openFolder;
        made.readdir = listNames;
        made.readdirplus = listWithAttributes;
        return made;
    }();
    return all;
}

}  // namespace quillbox_mount
