// trouble_sentences.cpp - see trouble_sentences.h.
#include "trouble_sentences.h"

#include "host_name.h"
#include "troubles.h"

#include "ce/error.h"

namespace platform::device {

namespace {

using file::Trouble;

std::string reasonOf(DWORD error)
{
    switch (error) {
    case ERROR_ACCESS_DENIED:
        return "no permission, or it is read-only";
    case ERROR_WRITE_PROTECT:
        return "the disk can't be written";
    case ERROR_SHARING_VIOLATION:
        return "another program uses it";
    case ERROR_DISK_FULL:
        return "the disk is full";
    case ERROR_GEN_FAILURE:
        return "the disk failed";
    case ERROR_INVALID_NAME:
        return "no file can have that name";
    case ERROR_FILENAME_EXCED_RANGE:
        return "the name is too long";
    default:
        return "the system had no more room for it";
    }
}

void tell(Trouble kind, const std::string& what, std::vector<std::string>& sentences)
{
    const file::Troubles troubles = file::troublesSoFar(kind);
    if (troubles.paths == 0)
        return;
    const std::string first = "\"" + text::toUtf8(troubles.first) + "\" (" + reasonOf(troubles.error) + ").";
    if (troubles.paths == 1)
        sentences.push_back("This couldn't be " + what + ": " + first);
    else
        sentences.push_back(std::to_string(troubles.paths) + " files or folders couldn't be " + what +
                            ". The first is " + first);
}

}  // namespace

std::vector<std::string> whatWasLeftOut()
{
    std::vector<std::string> sentences;
    tell(Trouble::Reading, "read", sentences);
    tell(Trouble::Writing, "written whole", sentences);
    return sentences;
}

}  // namespace platform::device
