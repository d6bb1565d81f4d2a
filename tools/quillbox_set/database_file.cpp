#include "database_file.h"

#include "archive/fault_text.h"
#include "archive/growing_file.h"
#include "archive/item_text.h"
#include "result_line.h"
#include "target_stream.h"

#include <ostream>

namespace quillbox_set {

using namespace archive;

std::string writeDatabaseFile(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                              const DatabaseFile& target, std::optional<std::uint64_t>& bytes)
{
    GrowingFile file(target.path);
    TargetBuffer buffer(file);
    std::ostream out(&buffer);
    database_formats::LeftOut leftOut;
    if (std::string fault = writeDatabase(data, entry, image, target.format, out, leftOut); !fault.empty())
        return fault;
    reportLeftOut(image.name, leftOut);
    if (file.moveToTarget(target.replace) != ERROR_SUCCESS)
        return errorText(file.error());
    bytes = file.bytes();
    return "";
}

}  // namespace quillbox_set
