#include "trouble_sentences.h"

#include "kernel/error_reason.h"
#include "text/host_name.h"

#include "ce/error.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

namespace platform::device {

namespace {

using kernel::NamedTrouble;
using kernel::Since;
using kernel::Trouble;
using kernel::Troubled;

constexpr std::size_t MostNamed = 20;

constexpr std::array Kinds = {Troubled::File, Troubled::DatabaseList, Troubled::Database, Troubled::Registry};

// The kinds of failures that the program itself reports (ce/outcome.h). Sentences about them come before sentences
// about failed calls (Noted). If the program has reported a failure of an item, the failed calls for this item get no
// sentence of their own. But the sentence about the item can give the error of a call (see Report).
constexpr std::array Reported = {Trouble::Numbering, Trouble::Storing,   Trouble::Restoring,
                                 Trouble::Deleting,  Trouble::Replacing, Trouble::Reaching};
constexpr std::array Noted = {Trouble::Reading, Trouble::Writing};

// Returns the reason why an item of a set failed. Returns null if the error has no special meaning for such an item.
const char* reasonOfItem(Trouble kind, Troubled what, DWORD error)
{
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
        return kind == Trouble::Restoring ? "the set's data file is missing" : "it is gone";
    case ERROR_PATH_NOT_FOUND:
        return kind == Trouble::Storing && what == Troubled::File ? "it is gone" : nullptr;
    case ERROR_NO_DATA:
        return what == Troubled::File ? "nothing is in the set" : nullptr;
    case ERROR_HANDLE_EOF:
        return kind == Trouble::Restoring ? "the set is damaged" : "less of it could be read than it is long";
    case ERROR_FILE_TOO_LARGE:
        return "the set's data file would pass 4 GiB";
    case ERROR_FILE_CORRUPT:
        return "the set is damaged";
    case ERROR_FILE_INVALID:
        return "it has changed since it was read";
    case ERROR_CANCELLED:
        return "the run was stopped";
    case ERROR_RETRY:
        return "it was written just before it was read, so a later change might not show";
    case ERROR_WRITE_FAULT:
        return "the set isn't safely on the disk";
    default:
        return nullptr;
    }
}

std::string reasonOf(Trouble kind, Troubled what, DWORD error)
{
    if (const char* reason = reasonOfItem(kind, what, error))
        return reason;
    const bool isFile = what == Troubled::File;
    if (const char* reason = kernel::errorReason(error); reason && (isFile || error != ERROR_GEN_FAILURE))
        return reason;
    return isFile ? "error " + std::to_string(error) : "it is damaged, or the disk failed";
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

std::string manyOf(Trouble kind, Troubled what)
{
    const bool mayBeFolders = kind == Trouble::Reading || kind == Trouble::Writing;
    if (what == Troubled::File)
        return mayBeFolders ? " files or folders " : " files ";
    return what == Troubled::Registry ? " registries " : " databases ";
}

// The words of a sentence before the name of an item. `one` is for a sentence about a single item. `many` is for a
// sentence about several items, which names the first one.
struct Wording {
    const char* one;
    const char* many;
};

Wording wordingOf(Trouble kind, Troubled what)
{
    switch (kind) {
    case Trouble::Storing:
        return {"This isn't in the set, or not whole: ", "aren't in the set, or not whole. The first is "};
    case Trouble::Restoring:
        return {"This couldn't be restored whole: ", "couldn't be restored whole. The first is "};
    case Trouble::Deleting:
        return {"This is in the set and wasn't deleted: ", "are in the set and weren't deleted. The first is "};
    case Trouble::Replacing:
        return {"This had the name of a temporary file of Quillbox and was replaced: ",
                "had names of temporary files of Quillbox and were replaced. The first is "};
    case Trouble::Reaching:
        return {"The run was stopped before this: ", "weren't reached, because the run was stopped. The first is "};
    case Trouble::Writing:
        return {"This couldn't be written whole: ", "couldn't be written whole. The first is "};
    default:
        if (what == Troubled::File)
            return {"This couldn't be read: ", "couldn't be read. The first is "};
        return {"This couldn't be read whole: ", "couldn't be read whole. The first is "};
    }
}

std::string withReason(Trouble kind, Troubled what, const NamedTrouble& trouble)
{
    const std::string name = nameOf(what, trouble.name);
    return trouble.error == 0 ? name : name + " (" + reasonOf(kind, what, trouble.error) + ")";
}

std::string noSet(const NamedTrouble& trouble)
{
    const std::string failed = "No set was made in \"" + text::toUtf8(trouble.name) + "\": ";
    if (trouble.error == ERROR_FILE_EXISTS)
        return failed + "the numbers 1 to 99 are all taken. To free a number, move both files of its set (.QLT and "
                        ".QDT) to another folder, or delete them.";
    return failed + reasonOf(Trouble::Numbering, Troubled::File, trouble.error) + ".";
}

// Adds the sentences for one kind of failure and one kind of item. Databases have a sentence of their own, so that a
// user doesn't overlook a database among many files.
void tell(Trouble kind, Troubled what, const std::vector<NamedTrouble>& troubles, std::vector<LeftOut>& all)
{
    if (troubles.empty())
        return;
    if (kind == Trouble::Numbering) {
        for (const NamedTrouble& trouble : troubles)
            all.push_back({noSet(trouble), {}, 0});
        return;
    }
    const Wording wording = wordingOf(kind, what);
    const std::string first = withReason(kind, what, troubles.front()) + ".";
    LeftOut leftOut;
    leftOut.sentence = troubles.size() == 1
                           ? wording.one + first
                           : std::to_string(troubles.size()) + manyOf(kind, what) + wording.many + first;
    const std::size_t named = std::min(troubles.size(), MostNamed);
    for (std::size_t i = 1; i < named; i++)
        leftOut.furtherOnes.push_back(withReason(kind, what, troubles[i]));
    leftOut.unnamed = troubles.size() - named;
    all.push_back(std::move(leftOut));
}

// Combines the errors that the program reported with the errors of the platform's calls. If both have an error for the
// same item, the report contains one of them:
// - For a file: the error of the call if the program reported error 31 (ERROR_GEN_FAILURE, no known reason), otherwise
//   the program's error.
// - For a database or the registry: the program's error if it says that the set is damaged, otherwise the error of the
//   call.
class Report {
public:
    explicit Report(Since since) : since_(since)
    {
        for (const Trouble kind : Noted) {
            for (const Troubled what : Kinds) {
                for (const NamedTrouble& trouble : kernel::troublesOf(kind, what, since))
                    noted_.insert({{what, trouble.name}, trouble.error});
            }
        }
    }

    std::vector<NamedTrouble> reported(Trouble kind, Troubled what)
    {
        std::vector<NamedTrouble> troubles = kernel::troublesOf(kind, what, since_);
        for (NamedTrouble& trouble : troubles) {
            told_.insert({what, trouble.name});
            const auto noted = noted_.find({what, trouble.name});
            if (noted != noted_.end() && knowsBetter(what, trouble.error))
                trouble.error = noted->second;
            if (kind == Trouble::Numbering)
                foldersWithoutSet_.push_back(trouble.name + u"\\");
        }
        return troubles;
    }

    [[nodiscard]] std::vector<NamedTrouble> notedOfOthers(Trouble kind, Troubled what) const
    {
        std::vector<NamedTrouble> troubles = kernel::troublesOf(kind, what, since_);
        std::erase_if(troubles, [&](const NamedTrouble& each) {
            return told_.contains({what, each.name}) ||
                   std::ranges::any_of(foldersWithoutSet_,
                                       [&](const auto& folder) { return each.name.starts_with(folder); });
        });
        return troubles;
    }

private:
    using Name = std::pair<Troubled, std::u16string>;

    // Returns whether the error of a call is more exact than `reported`, the error that the program reported. For a
    // database or the registry, ERROR_FILE_CORRUPT means that the set is damaged. Only the program can find that out,
    // so in this case the program's error is the more exact one.
    static bool knowsBetter(Troubled what, DWORD reported)
    {
        return what == Troubled::File ? reported == ERROR_GEN_FAILURE : reported != ERROR_FILE_CORRUPT;
    }

    Since since_;
    std::map<Name, DWORD> noted_;
    std::set<Name> told_;
    std::vector<std::u16string> foldersWithoutSet_;  // a failure of a file in such a folder has the same cause
};

}  // namespace

std::vector<LeftOut> whatWasLeftOut(Since since)
{
    std::vector<LeftOut> all;
    Report report(since);
    for (const Trouble kind : Reported) {
        for (const Troubled what : Kinds)
            tell(kind, what, report.reported(kind, what), all);
    }
    for (const Trouble kind : Noted) {
        for (const Troubled what : Kinds)
            tell(kind, what, report.notedOfOthers(kind, what), all);
    }
    return all;
}

}  // namespace platform::device
