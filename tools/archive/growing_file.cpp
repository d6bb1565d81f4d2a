#include "archive/growing_file.h"

#include "archive/long_work.h"

#include "file/file_move.h"
#include "file/whole_file.h"
#include "kernel/troubles.h"

#include "ce/error.h"
#include "ce/file.h"

#include <utility>

namespace archive {

namespace {

constexpr std::size_t heldBytes = std::size_t{256} * 1024;

// Makes the missing folders of the path and returns them. If a folder can't be made, the opening of the file fails
// later, so this function reports no error.
std::vector<std::u16string> makeFoldersOf(const std::u16string& path)
{
    std::vector<std::u16string> made;
    for (std::size_t end = path.find(u'\\', 1); end != std::u16string::npos; end = path.find(u'\\', end + 1)) {
        if (CreateDirectoryW(path.substr(0, end).c_str(), nullptr))
            made.push_back(path.substr(0, end));
    }
    return made;
}

std::u16string pathBeside(const std::u16string& target)
{
    const std::u16string name = u"." + unguessableName() + u".part";
    std::u16string beside = target.substr(0, target.rfind(u'\\') + 1) + name;
    return beside.size() < MAX_PATH ? beside : u"\\" + name;
}

bool exists(const std::u16string& path)
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Calls `make`, which returns an error code. If a folder of `path` is missing, makes the missing folders and calls
// `make` once more. Returns the error code of the last call.
template <class Make>
DWORD withFoldersOf(const std::u16string& path, std::vector<std::u16string>& madeFolders, const Make& make)
{
    const DWORD error = make();
    if (error != ERROR_PATH_NOT_FOUND)
        return error;
    madeFolders = makeFoldersOf(path);
    return make();
}

}  // namespace

GrowingFile::GrowingFile(std::u16string target) : target_(std::move(target)) {}

GrowingFile::~GrowingFile()
{
    file_.reset();
    if (!path_.empty()) {
        nameTargetInTrouble();
        (void)DeleteFileW(path_.c_str());
    }
    removeMadeFolders();
}

bool GrowingFile::write(std::span<const std::byte> bytes)
{
    if (error_ != ERROR_SUCCESS)
        return false;
    if (!file_ && held_.size() + bytes.size() <= heldBytes) {
        held_.insert(held_.end(), bytes.begin(), bytes.end());
        bytes_ += bytes.size();
        return true;
    }
    if (!store())
        return false;
    DWORD written = 0;
    if (!WriteFile(file_->handle(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        error_ = contentError_ = GetLastError();
    else if (written != bytes.size())
        error_ = contentError_ = ERROR_DISK_FULL;
    bytes_ += written;
    return error_ == ERROR_SUCCESS;
}

bool GrowingFile::cut(std::uint64_t bytes)
{
    if (error_ != ERROR_SUCCESS)
        return false;
    bytes_ = bytes;
    if (!file_) {
        held_.resize(static_cast<std::size_t>(bytes));
        return true;
    }
    auto high = static_cast<LONG>(bytes >> 32);
    (void)SetFilePointer(file_->handle(), static_cast<LONG>(bytes), &high, FILE_BEGIN);
    if (!SetEndOfFile(file_->handle()))
        error_ = contentError_ = GetLastError();
    return error_ == ERROR_SUCCESS;
}

BOOL GrowingFile::writeRaw(const BYTE* raw, DWORD bytes, void* target)
{
    checkStop();
    return static_cast<GrowingFile*>(target)->write(std::as_bytes(std::span(raw, bytes))) ? TRUE : FALSE;
}

HANDLE GrowingFile::handle()
{
    return store() ? file_->handle() : INVALID_HANDLE_VALUE;
}

void GrowingFile::setTarget(std::u16string target)
{
    removeMadeFolders();
    target_ = std::move(target);
    error_ = contentError_;
}

const OpenFile* GrowingFile::opened()
{
    return store() ? &*file_ : nullptr;
}

DWORD GrowingFile::moveToTarget(bool replace)
{
    const bool replaces = replace && exists(target_);
    if (error_ == ERROR_SUCCESS && (file_ || replaces || !makeWhole()) && store())
        moveStored(replaces);
    if ((error_ == ERROR_ALREADY_EXISTS || error_ == ERROR_FILE_EXISTS) && !exists(target_))
        error_ = ERROR_DUP_NAME;
    if (error_ == ERROR_SUCCESS)
        madeFolders_.clear();
    return error_;
}

// Makes the target file directly from the content in memory. Returns false if the content has to be stored in a
// temporary file first.
bool GrowingFile::makeWhole()
{
    const DWORD error =
        withFoldersOf(target_, madeFolders_, [&] { return platform::file::makeWholeFile(target_, held_); });
    if (error == ERROR_NOT_SUPPORTED)
        return false;
    error_ = error;
    return true;
}

// Makes the temporary file with the content from memory, unless it was made before. Returns false if this or an earlier
// call has failed.
bool GrowingFile::store()
{
    if (file_ || error_ != ERROR_SUCCESS)
        return error_ == ERROR_SUCCESS;
    const std::u16string path = pathBeside(target_);
    error_ = withFoldersOf(target_, madeFolders_, [&]() -> DWORD {
        file_.emplace(path, GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
        return file_->isOpen() ? ERROR_SUCCESS : GetLastError();
    });
    if (error_ != ERROR_SUCCESS) {
        file_.reset();
        return false;
    }
    path_ = path;
    bytes_ = 0;
    return held_.empty() || write(std::exchange(held_, {}));
}

void GrowingFile::moveStored(bool replace)
{
    if (replace && !FlushFileBuffers(file_->handle()))
        error_ = GetLastError();
    if (!file_->close())
        contentError_ = GetLastError();
    if (error_ == ERROR_SUCCESS)
        error_ = contentError_;
    if (error_ == ERROR_SUCCESS)
        error_ =
            withFoldersOf(target_, madeFolders_, [&] { return platform::file::moveFile(path_, target_, replace); });
    if (error_ == ERROR_SUCCESS)
        path_.clear();
}

// A failed write was recorded under the name of the temporary file. Records it under the name of the target, because
// the record is shown to the user.
void GrowingFile::nameTargetInTrouble()
{
    using namespace platform::kernel;
    if (contentError_ == ERROR_SUCCESS)
        return;
    forgetTrouble(Trouble::Writing, Troubled::File, path_, contentError_);
    noteTrouble(Trouble::Writing, Troubled::File, target_, contentError_);
}

void GrowingFile::removeMadeFolders()
{
    for (; !madeFolders_.empty(); madeFolders_.pop_back())
        (void)RemoveDirectoryW(madeFolders_.back().c_str());  // fails if the folder isn't empty
}

}  // namespace archive
