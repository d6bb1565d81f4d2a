#include "archive/fault_text.h"

#include "kernel/error_reason.h"
#include "set/list_reader.h"

#include "ce/error.h"

namespace archive {

std::vector<std::string> listFaultTexts(DWORD faults, const std::string& text)
{
    std::vector<std::string> texts;
    const auto add = [&](DWORD fault, const std::string& words) {
        if (faults & fault)
            texts.push_back(words);
    };
    add(CutByEndOfFile, "the list file ends inside it");
    add(TextEmpty, text + " has a length of 0");
    add(TextTooLong, text + " has more than 260 characters");
    add(TextNotTerminated, text + " has no closing NUL");
    add(TextEndsEarly, text + " has a NUL before its end");
    return texts;
}

std::string streamFaultText(StreamFault fault)
{
    switch (fault) {
    case StreamFault::None:
        return "its stream is whole";
    case StreamFault::NoMagic:
        return "no stream begins at its start offset";
    case StreamFault::ReadFailed:
        return "the data file couldn't be read";
    case StreamFault::LengthCut:
        return "its stream ends inside a block's length";
    case StreamFault::EmptyBlock:
        return "its stream has a block of length 0";
    case StreamFault::BlockTooLong:
        return "its stream has a block that is longer than the format allows";
    case StreamFault::BlockCut:
        return "its stream ends inside a block";
    case StreamFault::BlockDamaged:
        return "its stream has a block that doesn't unpack";
    case StreamFault::NotClosed:
        return "its stream was cut: the closing block is missing";
    case StreamFault::BytesAfterEnd:
        return "bytes follow the closing block of its stream";
    case StreamFault::StoppedBySink:
        return "it couldn't be written";
    }
    return "its stream is damaged";
}

std::string notOpened(const std::string& what, DWORD error)
{
    if (error == ERROR_FILE_NOT_FOUND)
        return what + " is missing";
    const char* const reason = platform::kernel::errorReason(error);
    return what + " can't be opened: " + (reason ? reason : "error " + std::to_string(error));
}

std::string errorText(DWORD error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return "a folder of its path is missing or is not a folder";
    case ERROR_ACCESS_DENIED:
        return "no permission, or a folder has that name";
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return "exists already (--force replaces it)";
    case ERROR_DUP_NAME:
        return "a link, or something else that isn't a file, has that name; remove it first";
    case ERROR_INVALID_NAME:
        return "refused: not a valid name for a file";
    case ERROR_NOT_SAME_DEVICE:
        return "that folder is on another disk";
    case ERROR_FILENAME_EXCED_RANGE:
        return "refused: the name is too long";
    default:
        const char* const reason = platform::kernel::errorReason(error);
        return reason ? reason : "error " + std::to_string(error);
    }
}

}  // namespace archive
