// trouble_sentences.cpp - see trouble_sentences.h.
#include "trouble_sentences.h"

#include "host_name.h"
#include "troubles.h"

#include "ce/error.h"

namespace platform::device {

namespace {

using kernel::Trouble;
using kernel::Troubled;

constexpr Troubled Kinds[] = {Troubled::File, Troubled::DatabaseList, Troubled::Database, Troubled::Registry};

std::string reasonOf(Troubled what, DWORD error)
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
        return what == Troubled::File ? "the disk failed" : "it is damaged, or the disk failed";
    case ERROR_PATH_NOT_FOUND:
        return "there is no folder for it";
    case ERROR_INVALID_NAME:
        return "no file can have that name";
    case ERROR_FILENAME_EXCED_RANGE:
        return "the name is too long";
    default:
        return "the system had no more room for it";
    }
}

std::string nameOf(Troubled what, const std::u16string& name)
{
    switch (what) {
    case Troubled::Database:
        return "database \"" + text::toUtf8(name) + "\"";
    case Troubled::DatabaseList:
        return "the list of databases";
    case Troubled::Registry:
        return "the registry";
    default:
        return "\"" + text::toUtf8(name) + "\"";
    }
}

// A sentence for each kind of thing: among many files a database would be overlooked.
void tell(Trouble kind, Troubled what, std::vector<std::string>& sentences)
{
    const kernel::Troubles troubles = kernel::troublesSoFar(kind, what);
    if (troubles.count == 0)
        return;
    const std::string first = nameOf(what, troubles.first) + " (" + reasonOf(what, troubles.error) + ").";
    const std::string done = kind == Trouble::Reading && what == Troubled::File ? "read"
                             : kind == Trouble::Reading                         ? "read whole"
                                                                                : "written whole";
    if (troubles.count == 1)
        sentences.push_back("This couldn't be " + done + ": " + first);
    else
        sentences.push_back(std::to_string(troubles.count) +
                            (what == Troubled::File ? " files or folders" : " databases") + " couldn't be " + done +
                            ". The first is " + first);
}

}  // namespace

std::vector<std::string> whatWasLeftOut()
{
    std::vector<std::string> sentences;
    for (const Trouble kind : {Trouble::Reading, Trouble::Writing})
        for (const Troubled what : Kinds)
            tell(kind, what, sentences);
    return sentences;
}

}  // namespace platform::device
