// recovered_items.h - writes each stream that is found in a data file to a new file. Databases become JSON lines, the
// registry becomes a .reg file, and all other streams are only unpacked. If a database has a record that is too large
// to be converted, the database is only unpacked too.
#pragma once

#include "archive/growing_file.h"
#include "archive/image_check.h"
#include "archive/long_work.h"
#include "archive/name_set.h"
#include "archive/stream_scan.h"
#include "database_formats/database_format.h"
#include "file_type.h"
#include "new_set.h"
#include "old_list.h"
#include "recovery_report.h"
#include "sound_stream.h"

#include <optional>
#include <string>
#include <vector>

namespace quillbox_set {

// Which items the new set gets.
enum class Wanted { Nothing, Complete, CompleteAndUnproven };

class RecoveredItems final : public archive::ScanSink {
public:
    // The recovered files are written to the platform's root folder. So the root must be the folder that the user wants
    // for them.
    RecoveredItems(const archive::OpenFile& data, const archive::MountedSet& mounted, OldLists& lists, Wanted wanted,
                   RecoveryReport& report);

    void begin(const archive::FoundStream& stream) override;
    void bytes(const archive::FoundStream& stream, std::span<const std::byte> raw) override;
    void end(const archive::FoundStream& stream) override;

    NewSet& set() { return set_; }

private:
    // What the content of a stream is.
    struct Content {
        BYTE kind;
        std::string fault;           // how the content breaks the rules of its kind; empty if it doesn't
        archive::ImageReport image;  // of a database

        // The format to convert a database to. Nothing if a record is too large to be converted. The unpacked bytes
        // of the database are then written without conversion.
        std::optional<database_formats::Format> format() const;
    };

    Content contentOf(const archive::FoundStream& stream, BYTE claimed);
    void write(RecoveredItem& item, const Content& content, bool isNamed);
    void writeTo(const std::u16string& target, RecoveredItem& item, const Content& content);
    std::u16string knownTarget(const RecoveredItem& item, const Content& content) const;
    std::u16string newTarget(const Content& content);
    bool isFree(const std::u16string& target) const;
    void addToSet(RecoveredItem& item, bool isNamed);

    const archive::OpenFile& data_;
    const archive::MountedSet& mounted_;
    OldLists& lists_;
    Wanted wanted_;
    RecoveryReport& report_;
    FileTypes types_;
    NewSet set_;
    archive::NameSet targets_;
    unsigned numbered_ = 0;
    std::optional<archive::GrowingFile> file_;  // the raw bytes of the current stream
    std::vector<std::byte> head_;               // the first raw bytes of the current stream
    // The raw bytes of the current stream before the first damage, packed into a new undamaged stream. So the functions
    // that need an undamaged stream can read the content of a damaged one up to the damage. Has a value only if the
    // content may be a database or the registry.
    std::optional<SoundStream> sound_;
    archive::Progress progress_{1};
};

}  // namespace quillbox_set
