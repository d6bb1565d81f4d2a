#include "single_item.h"

#include "archive/fault_text.h"
#include "archive/item_content.h"
#include "archive/long_work.h"
#include "database_text.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include "ce/file.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

// An empty folder that is deleted with its content at the end.
class TemporaryFolder {
public:
    TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "quillbox-XXXXXX").string())
    {
        if (!::mkdtemp(path_.data()))
            throw std::runtime_error("a folder for temporary files can't be made: " + path_);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

class ToOutput final : public ContentSink {
public:
    bool bytes(std::span<const std::byte> piece) override
    {
        std::cout.write(reinterpret_cast<const char*>(piece.data()), static_cast<std::streamsize>(piece.size()));
        return std::cout.good();
    }
};

// Returns the fault of the item, or an empty text.
std::string write(const OpenFile& data, Item item, std::optional<database_formats::Format> format)
{
    ToOutput output;
    if (format && item.isDatabase()) {
        const ContentReport content = readContent(data, item, output);
        const std::string failure = content.image.hasHead()
                                        ? writeDatabase(data, item.entry, content.image, *format, std::cout)
                                        : std::string();
        return content.fault.empty() ? failure : content.fault;
    }
    std::string damage;
    if (format && item.isRegistry())
        damage = readContent(data, item, output).fault;
    item.entry.kind = ItemKindFile;  // the bytes as they are
    const std::string fault = readContent(data, item, output).fault;
    return fault.empty() ? damage : fault;
}

}  // namespace

int writeItem(const SetFiles& files, const std::string& name, std::optional<database_formats::Format> format)
{
    const TemporaryFolder folder;
    const OpenedSet set(files, folder.path());
    if (!set.isOpen())
        return reportTrouble(set.trouble());
    const OpenFile data(set.mounted().dataPath, GENERIC_READ, OPEN_EXISTING);
    const std::u16string wanted = nameFromUser(name);
    Item item;
    while (set.list().next(item)) {
        if (item.shownName() != wanted)
            continue;
        const std::string fault = data.isOpen() ? write(data, item, format) : notOpened("the data file", data.error());
        if (fault.empty())
            return exitGood;
        std::cout.flush();
        std::cerr << "quillbox-set: " << item.text() << ": " << fault << "\n";
        return exitFaults;
    }
    return reportTrouble("the set has no item " + onScreen(wanted));
}

}  // namespace quillbox_set
