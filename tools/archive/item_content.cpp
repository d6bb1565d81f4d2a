#include "archive/item_content.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"

namespace archive {

namespace {

namespace registry = platform::registry;

struct FileReading {
    ContentSink& sink;
    std::uint64_t bytes = 0;
};

BOOL passOn(const BYTE* raw, DWORD bytes, void* context)
{
    checkStop();
    auto& reading = *static_cast<FileReading*>(context);
    reading.bytes += bytes;
    return reading.sink.bytes(std::as_bytes(std::span(raw, bytes))) ? TRUE : FALSE;
}

void readFile(const OpenFile& data, const ListEntry& entry, ContentSink& sink, ContentReport& report)
{
    FileReading reading{sink};
    const StreamFault fault = DecodeStream(data.handle(), entry.startOffset, entry.endOffset, passOn, &reading);
    report.bytes = reading.bytes;
    if (fault != StreamFault::None && fault != StreamFault::StoppedBySink)
        report.fault = streamFaultText(fault);
}

// Counts the keys and values, and passes each of them to `sink`.
class Counter final : public registry::RegistryTextSink {
public:
    Counter(ContentSink& sink, ContentReport& report) : sink_(sink), report_(report) {}

    bool key(const registry::KeyPath& path) override
    {
        report_.keys++;
        return accepted(sink_.key(path));
    }
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) override
    {
        report_.values++;
        return accepted(sink_.value(name, type, data));
    }
    bool isRefused() const { return refused_; }

private:
    bool accepted(bool good)
    {
        refused_ |= !good;
        return good;
    }

    ContentSink& sink_;
    ContentReport& report_;
    bool refused_ = false;
};

// Reads the registry with the same reader as a restore on a device.
void readRegistry(const OpenFile& data, const ListEntry& entry, ContentSink& sink, ContentReport& report)
{
    UnpackedStream stream(data, entry);
    Counter counter(sink, report);
    const auto fault = registry::readRegistryText([&](std::span<std::byte> buffer) { return stream.read(buffer); },
                                                  registry::Wholeness::Required, counter);
    if (fault)
        report.fault =
            "it isn't a registry that a device accepts: line " + std::to_string(fault->line) + ": " + fault->what;
    if (counter.isRefused())
        report.fault = "it has too many keys and values to compare them";
    // A damaged stream also makes the text incomplete. So the fault of the stream, which is the cause, replaces the
    // fault of the text.
    if (const StreamFault cut = stream.finish(); cut != StreamFault::None)
        report.fault = streamFaultText(cut);
    report.bytes = stream.taken();
}

}  // namespace

ContentReport readContent(const OpenFile& data, const Item& item, ContentSink& sink)
{
    ContentReport report;
    if (item.isDatabase()) {
        report.image = checkImage(data, item.entry, &sink);
        report.fault = report.image.fault;
        report.bytes = report.image.bytes;
    } else if (item.isRegistry()) {
        readRegistry(data, item.entry, sink, report);
    } else {
        readFile(data, item.entry, sink, report);
    }
    return report;
}

std::u16string keyText(const registry::KeyPath& path)
{
    const auto row = static_cast<std::size_t>(path.root - registry::ClassesRootRow);
    std::u16string text(registry::PredefinedNames[row]);
    for (const std::u16string& level : path.levels)
        text += u"\\" + level;
    return text;
}

}  // namespace archive
