#include "growing_file.h"

#include "file/file_move.h"

#include "ce/file.h"

namespace quillbox_set {

using namespace archive;

namespace {

// Makes the missing folders of the path and returns them. A folder that can't be made is no error here: the opening of
// the file fails then.
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

OpenFile openNew(const std::u16string& path, std::vector<std::u16string>& madeFolders)
{
    OpenFile file(path, GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
    if (file.isOpen() || GetLastError() != ERROR_PATH_NOT_FOUND)
        return file;
    madeFolders = makeFoldersOf(path);
    return {path, GENERIC_READ | GENERIC_WRITE, CREATE_NEW};
}

}  // namespace

GrowingFile::GrowingFile(const std::u16string& target)
    : path_(pathBeside(target)), file_(openNew(path_, madeFolders_)),
      error_(file_.isOpen() ? ERROR_SUCCESS : GetLastError())
{
    if (!file_.isOpen())
        path_.clear();
}

GrowingFile::~GrowingFile()
{
    (void)file_.close();
    if (!path_.empty())
        (void)DeleteFileW(path_.c_str());
    for (; !madeFolders_.empty(); madeFolders_.pop_back())
        (void)RemoveDirectoryW(madeFolders_.back().c_str());  // fails if it is in use by now
}

bool GrowingFile::write(std::span<const std::byte> bytes)
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

BOOL GrowingFile::writeRaw(const BYTE* raw, DWORD bytes, void* target)
{
    return static_cast<GrowingFile*>(target)->write(std::as_bytes(std::span(raw, bytes))) ? TRUE : FALSE;
}

DWORD GrowingFile::moveTo(const std::u16string& path, bool replace)
{
    const bool replaces = replace && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (error_ == ERROR_SUCCESS && replaces && !FlushFileBuffers(file_.handle()))
        error_ = GetLastError();
    if (!file_.close() && error_ == ERROR_SUCCESS)
        error_ = GetLastError();
    if (error_ != ERROR_SUCCESS)
        return error_;
    error_ = platform::file::moveFile(path_, path, replace);
    if (error_ == ERROR_SUCCESS) {
        path_.clear();
        madeFolders_.clear();
    }
    return error_;
}

}  // namespace quillbox_set
