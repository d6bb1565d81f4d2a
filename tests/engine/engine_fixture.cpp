// engine_fixture.cpp - see engine_fixture.h.

#include "engine_fixture.h"

#include "backup_run.h"
#include "name_space.h"
#include "options.h"
#include "restore_command.h"
#include "set_state.h"

#include "ce/text.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>

Options gOptions;

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    return content.str();
}

int folderDescriptor(const fs::path& path)
{
    return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

}  // namespace

EngineTest::EngineTest()
{
    const char* folder = std::getenv("TMPDIR");
    std::string pattern = std::string(folder                   ? folder
                                      : fs::exists("/dev/shm") ? "/dev/shm"
                                                               : "/tmp") +
                          "/engine.XXXXXX";
    base_ = mkdtemp(pattern.data());
    store_ = base_ / "object-store";
    card_ = base_ / "Card";
    fs::create_directories(store_);
    fs::create_directories(card_);
    gOptions = {};
    gOptions.restoreMode = RestoreModeReplace;
    gUser = {};
    gUser.choice = u"\\Card";
    RenewLists();
    mount();
}

EngineTest::~EngineTest()
{
    platform::file::removeAllMounts();
    RenewLists();
    fs::remove_all(base_);
}

void EngineTest::mount(std::optional<std::uint64_t> cardCapacity)
{
    using platform::file::addMount;
    platform::file::removeAllMounts();
    ASSERT_TRUE(addMount({.name = u"", .folder = folderDescriptor(store_), .card = false, .capacity = {}}));
    ASSERT_TRUE(addMount({.name = u"Card", .folder = folderDescriptor(card_), .card = true, .capacity = cardCapacity}));
}

void EngineTest::write(const std::string& name, const std::string& content)
{
    fs::create_directories((store_ / name).parent_path());
    std::ofstream(store_ / name, std::ios::binary) << content;
    // A file that was written a moment ago isn't deleted.
    fs::last_write_time(store_ / name, fs::file_time_type::clock::now() - std::chrono::seconds(10));
}

std::string EngineTest::read(const std::string& name) const
{
    return contentOf(store_ / name);
}

bool EngineTest::exists(const std::string& name) const
{
    return fs::exists(fs::symlink_status(store_ / name));
}

void EngineTest::removeAll(const std::string& name)
{
    fs::remove_all(store_ / name);
}

void EngineTest::mark(const std::u16string& path)
{
    ASSERT_EQ(gFileList->Add(path.c_str(), static_cast<DWORD>((path.size() + 1) * sizeof(WCHAR))), 1);
}

void EngineTest::backUp()
{
    gComment[0] = 0;
    RunBackup(BackupListedItems);
}

void EngineTest::restore(const std::string& list)
{
    gUser.choice = u"\\Card\\QUILBOX\\" + std::u16string(list.begin(), list.end()) + u".QLT";
    RunRestore(RestoreFull);
    gUser.choice = u"\\Card";
}

std::string EngineTest::cardFile(const std::string& name) const
{
    return contentOf(card_ / "QUILBOX" / name);
}
