#include "set_care.h"

#include "archive/long_work.h"
#include "archive/opened_set.h"
#include "archive/seal.h"

#include "ce/error.h"
#include "ce/outcome.h"

namespace platform::device {

namespace {

// The files of a set on the host. They are opened by their paths on the device.
std::optional<archive::SetFiles> filesOf(const Session& session, const std::u16string& listPath)
{
    auto files = archive::findSet(session.hostPath(listPath));
    if (files)
        files->shownFolder = listPath.substr(0, listPath.rfind(u'\\'));
    return files;
}

}  // namespace

void sealNewSet(const Session& session, const std::u16string& listPath)
{
    const auto files = filesOf(session, listPath);
    if (!files)
        return ReportItem(OutcomeNotStored, OutcomeFile, listPath.c_str(), ERROR_FILE_NOT_FOUND);
    const archive::SetMount set(*files, "");
    try {
        const auto digests = archive::digestsOf(*set);
        const DWORD error = digests ? archive::writeSeal(*files, *set, *digests) : ERROR_HANDLE_EOF;
        if (error != ERROR_SUCCESS)
            ReportItem(OutcomeNotStored, OutcomeFile, (*set).sumPath.c_str(), error);
    } catch (const archive::Stopped&) {
        ReportItem(OutcomeNotReached, OutcomeFile, (*set).sumPath.c_str(), ERROR_SUCCESS);
    }
}

}  // namespace platform::device
