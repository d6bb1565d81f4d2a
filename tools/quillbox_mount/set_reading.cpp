#include "set_reading.h"

#include "archive/item_text.h"
#include "archive/temporary_folder.h"

#include "ce/file.h"

#include <fstream>

#include <fcntl.h>

namespace quillbox_mount {

using namespace archive;

std::unique_ptr<const SetTree> SetReading::readTree(const SetFiles& files)
{
    const platform::kernel::MutexLock lock(mutex_);
    const OpenedSet set(files);
    return set.isOpen() ? std::make_unique<const SetTree>(set) : nullptr;
}

// Copies the item's stream to a temporary folder, as a data file that contains nothing else. Then writes the text of
// the item to another file in this folder. The file with the text stays open after the function has deleted the folder.
ItemText SetReading::writeText(const DataFile& data, const Node& node)
{
    const platform::kernel::MutexLock lock(mutex_);
    const TemporaryFolder folder;
    const SetFiles alone = {folder.path(), "", "stream", ""};
    std::ofstream stream(folder.path() + "/" + alone.dataName, std::ios::binary);
    const bool isCopied = data.copy(node.startOffset, node.endOffset, stream);
    stream.close();
    if (!isCopied || !stream)
        return {};
    const SetMount mount(alone, folder.path());
    if (!mount)
        return {};
    const OpenFile copied((*mount).dataPath, GENERIC_READ, OPEN_EXISTING);
    Item item{};
    item.entry.kind = node.itemKind;
    item.entry.endOffset = node.endOffset - node.startOffset;
    const std::string path = folder.path() + "/text";
    std::ofstream out(path, std::ios::binary);
    // Counts what the format can't represent. The mount doesn't show these counts. The user can see them with
    // quillbox-set, or can read the item as JSON lines, which contain everything.
    database_formats::LeftOut leftOut;
    const std::string fault = writeItemText(copied, item, node.format, out, leftOut);
    out.flush();
    if (!fault.empty() || !out)
        return {};
    const auto bytes = static_cast<std::uint64_t>(out.tellp());
    return {platform::host::Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), bytes};
}

}  // namespace quillbox_mount
