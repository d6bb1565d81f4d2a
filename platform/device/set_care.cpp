#include "set_care.h"

#include "exit_codes.h"
#include "refusal.h"
#include "telling.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/rotation.h"
#include "archive/set_search.h"

#include "kernel/error_reason.h"

#include "ce/error.h"

#include <exception>
#include <filesystem>

namespace platform::device {

namespace {

// Finds the files of a set by the host path of its list file. Sets `shownFolder` in the result to the folder on the
// device, so that the files are later opened by their paths on the device.
std::optional<archive::SetFiles> filesOf(const Session& session, const std::u16string& listPath)
{
    auto files = archive::findSet(session.hostPath(listPath));
    if (files)
        files->shownFolder = listPath.substr(0, listPath.rfind(u'\\'));
    return files;
}

}  // namespace

SealEnd sealNewSet(const Session& session, const std::u16string& listPath,
                   const std::optional<archive::FileDigest>& data)
{
    const auto failed = [&](const std::string& reason) {
        (void)tell("The checksums of the set can't be written: " + reason + ".", ExitLeftOut);
        return SealEnd::Failed;
    };
    try {
        const auto files = filesOf(session, listPath);
        if (!files)
            return failed("its list file is missing");
        const archive::SetMount set(*files, "");
        const auto digests = archive::digestsOf(*set, data);
        if (!digests)
            return failed("it can't be read");
        const DWORD error = archive::writeSeal(*files, *set, *digests);
        return error == ERROR_SUCCESS ? SealEnd::Sealed : failed(archive::errorText(error));
    } catch (const archive::Stopped&) {
        return SealEnd::Stopped;
    } catch (const std::exception& error) {
        return failed(kernel::reasonOf(error));
    }
}

Rotation rotateSets(const Session& session, const std::u16string& listPath, const archive::KeepRules& rules)
{
    Rotation rotation;
    const auto failed = [&](const std::string& sentence) {
        (void)tell(sentence, ExitLeftOut);
        rotation.isWhole = false;
    };
    const std::u16string folder = listPath.substr(0, listPath.rfind(u'\\'));
    try {
        const std::string made = std::filesystem::canonical(session.hostPath(listPath)).string();
        const archive::FoundSets found = archive::searchShownFolder(session.hostPath(folder), folder);
        for (const std::string& fault : found.faults)
            failed("No old set was removed, because " + fault + ".");
        if (!rotation.isWhole)
            return rotation;
        archive::Progress progress(session.showsProgress() ? found.sets.size() : 0);
        for (const archive::JudgedSet& set : archive::judgeSets(found.sets, rules, progress)) {
            const std::string path = archive::pathOf(set.files);
            if (!set.isSound)
                failed("The old set " + quoted(std::filesystem::path(path)) + " stays, because it is " + set.reason +
                       ".");
            if (!set.isToGo() || path == made)
                continue;
            if (const std::string failure = archive::removeSet(set.files); failure.empty())
                rotation.removed.push_back(path);
            else
                failed("The old set " + quoted(std::filesystem::path(path)) + " can't be removed: " + failure + ".");
        }
    } catch (const archive::Stopped&) {
        failed("The run was stopped before all old sets were removed.");
        rotation.isStopped = true;
    } catch (const std::exception& error) {
        failed("Not all old sets were looked at: " + kernel::reasonOf(error) + ".");
    }
    return rotation;
}

}  // namespace platform::device
