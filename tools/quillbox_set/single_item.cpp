#include "single_item.h"

#include "archive/fault_text.h"
#include "archive/item_text.h"
#include "archive/temporary_folder.h"
#include "exit_code.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include "ce/file.h"

#include <iostream>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

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
        database_formats::LeftOut leftOut;
        const std::string fault = data.isOpen() ? writeItemText(data, item, format, std::cout, leftOut)
                                                : notOpened("the data file", data.error());
        reportLeftOut(item.name(), leftOut);
        if (fault.empty())
            return exitGood;
        std::cout.flush();
        std::cerr << "quillbox-set: " << item.text() << ": " << fault << "\n";
        return exitFaults;
    }
    const std::string fault = set.list().missingItems();
    return reportTrouble("the set has no item " + onScreen(wanted) + (fault.empty() ? "" : ": " + fault));
}

}  // namespace quillbox_set
