#include "explanation.h"

#include "archive/fault_text.h"
#include "archive/growing_file.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include "ce/file.h"

#include <algorithm>
#include <iostream>
#include <set>
#include <string_view>

// Symbols of explanation_files.S: the first byte of each text, and the end of the last text.
extern "C" const char quillboxReadme[];
extern "C" const char quillboxReader[];
extern "C" const char quillboxExplanationEnd[];

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

struct Paper {
    std::u16string name;
    std::string text;
};

// Converts line ends to CR LF, which the editors of the device and of old computers need.
std::string withCarriageReturns(std::string_view text)
{
    std::string lines;
    lines.reserve(text.size() + text.size() / 32);
    for (const char c : text)
        c == '\n' ? lines += "\r\n" : lines += c;
    return lines;
}

std::vector<Paper> papers()
{
    return {{u"README.TXT", withCarriageReturns({quillboxReadme, quillboxReader})},
            {u"QLBXREAD.PY", {quillboxReader, quillboxExplanationEnd}}};
}

bool hasText(const std::u16string& path, const std::string& text)
{
    const OpenFile file(path, GENERIC_READ, OPEN_EXISTING);
    if (!file.isOpen() || file.size() != text.size())
        return false;
    std::string found(text.size(), '\0');
    DWORD bytes = 0;
    return ReadFile(file.handle(), found.data(), static_cast<DWORD>(found.size()), &bytes, nullptr) &&
           bytes == found.size() && found == text;
}

// Returns ERROR_SUCCESS or the error.
DWORD write(const std::u16string& path, const std::string& text, bool force)
{
    GrowingFile file(path);
    return file.write(std::as_bytes(std::span(text))) ? file.moveToTarget(force) : file.error();
}

// Writes README.TXT and QLBXREAD.PY into the folder of the set. Returns true if the folder has both files now and they
// are on the disk.
bool explain(const SetFiles& files, bool force)
{
    const SetMount mount(files, files.folder);
    if (!mount) {
        std::cerr << "quillbox-set: " << onScreen(files.folder) << ": the folder can't be opened\n";
        return false;
    }
    bool good = true;
    for (const Paper& paper : papers()) {
        const std::u16string path = (*mount).folder + u"\\" + paper.name;
        const bool isThere = hasText(path, paper.text);
        const DWORD error = isThere ? ERROR_SUCCESS : write(path, paper.text, force);
        const std::string shown = onScreen(files.folder) + "/" + onScreen(paper.name) + ": ";
        if (error == ERROR_SUCCESS)
            std::cout << shown << (isThere ? "is there already" : "written") << '\n';
        else
            std::cerr << "quillbox-set: " << shown << errorText(error) << '\n';
        good &= error == ERROR_SUCCESS;
    }
    if (FlushChangedVolumes())
        return good;
    std::cerr << "quillbox-set: what was written may be missing from the disk: " << errorText(GetLastError()) << '\n';
    return false;
}

}  // namespace

int explainSets(const FoundSets& found, bool force)
{
    int code = reportFaults(found);
    std::set<std::string> folders;
    for (const SetFiles& files : found.sets) {
        if (folders.insert(files.folder).second && !explain(files, force))
            code = std::max(code, exitFaults);
    }
    return code;
}

}  // namespace quillbox_set
