// recovery_report.h - reports which items were recovered from a data file. Writes recovered.txt for people, and prints
// lines or JSON to standard output.
#pragma once

#include "archive/growing_file.h"
#include "archive/stream_scan.h"
#include "json_list.h"
#include "old_list.h"
#include "target_stream.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace quillbox_set {

enum class Recovery { Complete, Unproven, Partial };

struct RecoveredItem {
    archive::FoundStream stream;
    Recovery state = Recovery::Partial;
    BYTE kind = 0;
    std::u16string name;      // from a list, or for a database from its image; empty if unknown
    std::u16string target;    // path below the folder. Empty if nothing was written.
    std::uint64_t bytes = 0;  // of the file that was written
    std::string damage;       // what is wrong with the content of a database or of the registry
    std::string fault;        // why nothing was written
    std::string notInSet;     // why it isn't in the new set
};

// The result for the new set. All members are empty if no new set was wanted.
struct NewSetResult {
    std::string path;                        // of the list file of the new set. Empty if the set wasn't written.
    std::string summary;                     // a sentence for people
    std::vector<std::u16string> unreadable;  // names of items that the set lacks, because a second reading failed
};

struct RecoveryCounts {
    std::uint64_t complete = 0;
    std::uint64_t unproven = 0;
    std::uint64_t partial = 0;
    std::uint64_t lost = 0;    // entries of a list for which no stream was found
    std::uint64_t failed = 0;  // items that couldn't be written
};

inline constexpr std::u16string_view ReportPath = u"\\recovered.txt";

class RecoveryReport {
public:
    // `file` is the path of the data file, which the report shows at its beginning. `folder` is the host's path of the
    // folder that gets the recovered files. In JSON the paths of these files begin with `folder`.
    RecoveryReport(const std::string& file, const std::string& folder, bool json);

    void add(const RecoveredItem& item);
    // Adds an item of the old list to the report as lost: the data file has no stream that matches its entry.
    void addLost(const OldEntry& entry);

    // Completes the report and writes recovered.txt. Returns an empty text, or the reason of a failure.
    std::string finish(const archive::ScanTotals& totals, const NewSetResult& set);

    const RecoveryCounts& counts() const { return counts_; }

private:
    void line(const std::string& text);

    std::string folder_;
    archive::GrowingFile file_;
    TargetBuffer buffer_;
    std::ostream out_;
    std::optional<JsonList> list_;
    RecoveryCounts counts_;
};

}  // namespace quillbox_set
