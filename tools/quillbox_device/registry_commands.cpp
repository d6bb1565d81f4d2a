#include "registry_commands.h"

#include "archive/host_output.h"
#include "archive/long_work.h"
#include "existing_device.h"
#include "failure.h"
#include "host_input.h"
#include "registry_text.h"

#include "registry/registry_content.h"

#include <iostream>

namespace quillbox_device {

using platform::database::Step;

void exportRegistry(const std::filesystem::path& device, const std::string& file, bool force)
{
    const DeviceToRead opened(device);
    archive::Output output(file, force);
    const bool written = platform::registry::writeContent([&](std::span<const std::byte> bytes) {
        archive::checkStop();
        output.stream().write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return output.stream().good();
    });
    if (!written && output.stream().good())
        throw Failure("The device's registry can't be read.");
    output.finish();
}

void importRegistry(const std::filesystem::path& device, const std::string& file)
{
    Input input(file);
    RegistryText text(input, file);
    const auto opened = openExisting(device);
    changeAsAWhole(*opened, [&] {
        const auto read =
            platform::registry::readContent([&](std::span<std::byte> buffer) { return text.read(buffer); },
                                            platform::registry::Wholeness::Free, platform::registry::Unnamed::Kept);
        if (read.step != Step::Done)
            throw Failure(read.step == Step::Full ? "There is no room on the device's disk."
                                                  : "The device's registry can't be written.");
        if (read.fault)
            throw Failure("\"" + file + "\", line " + std::to_string(read.fault->line) + ": " + read.fault->what +
                          ". Nothing was imported.");
    });
    if (text.isGuessed())
        std::cerr << "quillbox-device: The file isn't UTF-8 and was read as Windows-1252.\n";
}

}  // namespace quillbox_device
