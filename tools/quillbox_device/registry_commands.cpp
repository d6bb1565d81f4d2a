#include "registry_commands.h"

#include "archive/long_work.h"
#include "existing_device.h"
#include "failure.h"
#include "host_files.h"

#include "registry/registry_content.h"

namespace quillbox_device {

using platform::database::Step;

namespace {

std::size_t readFrom(Input& input, const std::string& file, std::span<std::byte> buffer)
{
    input.stream().read(reinterpret_cast<char*>(buffer.data()), static_cast<std::streamsize>(buffer.size()));
    if (input.stream().bad())  // not the end of the file: the Failure undoes the import
        throw Failure("\"" + file + "\" can't be read. Nothing was imported.");
    return static_cast<std::size_t>(input.stream().gcount());
        archive::checkStop();
}

}  // namespace

void exportRegistry(const std::filesystem::path& device, const std::string& file, bool force)
{
    const DeviceToRead opened(device);
    Output output(file, force);
    const bool written = platform::registry::writeContent([&](std::span<const std::byte> bytes) {
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
    const auto opened = openExisting(device);
    changeAsAWhole(*opened, [&] {
        const auto read =
            platform::registry::readContent([&](std::span<std::byte> buffer) { return readFrom(input, file, buffer); },
                                            platform::registry::Wholeness::Free, platform::registry::Unnamed::Kept);
        if (read.step != Step::Done)
            throw Failure(read.step == Step::Full ? "There is no room on the device's disk."
                                                  : "The device's registry can't be written.");
        if (read.fault)
            throw Failure("\"" + file + "\", line " + std::to_string(read.fault->line) + ": " + read.fault->what +
                          ". Nothing was imported.");
    });
}

}  // namespace quillbox_device
