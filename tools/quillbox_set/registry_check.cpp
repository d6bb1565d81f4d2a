#include "registry_check.h"

#include "fault_text.h"

#include "registry/registry_text_reader.h"

namespace quillbox_set {

namespace {

class Counter final : public platform::registry::RegistryTextSink {
public:
    explicit Counter(RegistryReport& report) : report_(report) {}

    bool key(const platform::registry::KeyPath& /*path*/) override
    {
        report_.keys++;
        return true;
    }
    bool value(std::u16string_view /*name*/, DWORD /*type*/, std::span<const std::byte> /*data*/) override
    {
        report_.values++;
        return true;
    }

private:
    RegistryReport& report_;
};

}  // namespace

RegistryReport checkRegistry(const OpenFile& data, const ListEntry& entry)
{
    using namespace platform::registry;
    RegistryReport report;
    UnpackedStream stream(data, entry);
    Counter counter(report);
    const auto fault = readRegistryText([&](std::span<std::byte> buffer) { return stream.read(buffer); },
                                        Wholeness::Required, counter);
    if (fault)
        report.fault =
            "it isn't a registry that a device accepts: line " + std::to_string(fault->line) + ": " + fault->what;
    // A damaged stream also makes the text incomplete. The fault of the stream is the cause, so it counts.
    if (const StreamFault cut = stream.finish(); cut != StreamFault::None)
        report.fault = streamFaultText(cut);
    report.bytes = stream.taken();
    return report;
}

}  // namespace quillbox_set
