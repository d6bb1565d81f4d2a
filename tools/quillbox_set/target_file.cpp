// target_file.cpp - see target_file.h.

#include "target_file.h"

#include "ce/file.h"

#include <utility>

namespace quillbox_set {

namespace {

constexpr DWORD readAndWrite = GENERIC_READ | GENERIC_WRITE;

// Each folder above the last part. One that exists is no failure: the open decides.
void makeFoldersOf(const std::u16string& path)
{
    for (std::size_t end = path.find(u'\\', 1); end != std::u16string::npos; end = path.find(u'\\', end + 1))
        (void)CreateDirectoryW(path.substr(0, end).c_str(), nullptr);
}

OpenFile openTarget(const std::u16string& path, DWORD creation)
{
    OpenFile target(path, readAndWrite, creation);
    if (target.isOpen() || GetLastError() != ERROR_PATH_NOT_FOUND)
        return target;
    makeFoldersOf(path);
    return {path, readAndWrite, creation};
}

}  // namespace

TargetFile::TargetFile(std::u16string path, bool replace)
    : path_(std::move(path)), file_(openTarget(path_, replace ? CREATE_ALWAYS : CREATE_NEW)),
      error_(file_.isOpen() ? ERROR_SUCCESS : GetLastError())
{
}

TargetFile::~TargetFile()
{
    const bool mine = file_.isOpen();
    file_.close();
    if (mine && !kept_)
        (void)DeleteFileW(path_.c_str());
}

bool TargetFile::write(std::span<const std::byte> bytes)
{
    DWORD written = 0;
    if (error_ == ERROR_SUCCESS &&
        !WriteFile(file_.handle(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        error_ = GetLastError();
    bytes_ += written;
    if (error_ == ERROR_SUCCESS && written != bytes.size())
        error_ = ERROR_DISK_FULL;
    return error_ == ERROR_SUCCESS;
}

void TargetFile::keep()
{
    kept_ = true;
}

}  // namespace quillbox_set
