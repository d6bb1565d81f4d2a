#include "text_patch.h"

#include "screen_text/screen_text.h"
#include "text_lines.h"

#include <dtl/dtl.hpp>

#include <sstream>
#include <vector>

namespace quillbox_set {

using namespace archive;

namespace {

// Limits the time and the memory of the comparison, which grow with the square of the number of changes.
constexpr std::size_t MostLines = 20'000;
constexpr std::size_t MostBytes = std::size_t{4} * 1024 * 1024;

class LineCollector final : public ContentSink {
public:
    bool bytes(std::span<const std::byte> piece) override
    {
        isText = isText && reader_.add(piece);
        return isText && !isTooLarge;
    }
    void finish() { reader_.finish(); }

    std::vector<std::string> lines;
    bool isText = true;
    bool isTooLarge = false;

private:
    void add(std::u16string_view line)
    {
        lines.push_back(screen_text::onScreen(line));
        size_ += lines.back().size();
        isTooLarge = lines.size() > MostLines || size_ > MostBytes;
    }

    std::size_t size_ = 0;
    TextLines reader_{[this](std::u16string_view line, std::uint64_t) {
        if (!isTooLarge)
            add(line);
    }};
};

}  // namespace

std::string textPatch(const FileInSet& older, const FileInSet& newer)
{
    LineCollector left;
    LineCollector right;
    (void)readContent(older.data, older.item, left);  // ignored, because the comparison has found both items undamaged
    (void)readContent(newer.data, newer.item, right);
    left.finish();
    right.finish();
    if (!left.isText || !right.isText)
        return "(not a text)\n";
    if (left.isTooLarge || right.isTooLarge)
        return "(too large for a patch)\n";
    dtl::Diff<std::string> changes(left.lines, right.lines);
    changes.compose();
    changes.composeUnifiedHunks();
    std::ostringstream out;
    const std::string name = screen_text::onScreen(older.item.name());
    out << "--- " << name << "\n+++ " << name << "\n";
    changes.printUnifiedFormat(out);
    return out.str();
}

}  // namespace quillbox_set
