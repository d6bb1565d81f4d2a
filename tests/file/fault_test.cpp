// fault_test.cpp - a call of the host fails, the process is killed, or the power is cut.
#include "file_fixture.h"

#include "file/file_move.h"
#include "file/whole_file.h"

#include <cerrno>
#include <vector>

using namespace platform::file;

namespace {

class FaultTest : public FileTest {
protected:
    ~FaultTest() override { clearFaultPlan(); }

    // Runs `action` twice, and cuts the power at the last host call of the second run.
    void cutPowerAtTheEndOf(const std::function<void()>& action) const
    {
        // The calls are counted in the second round, because the first action of a process makes some calls only once.
        std::uint64_t calls = 0;
        for (int round = 0; round < 2; round++) {
            calls = hostCallsOf(action);
            for (const auto& folder : std::filesystem::directory_iterator(outside())) {
                for (const auto& entry : std::filesystem::directory_iterator(folder))
                    std::filesystem::remove_all(entry);
            }
        }
        const int status = statusOfChild([&] {
            setFaultPlan({FaultKind::PowerCut, calls, 0});
            action();
            return true;
        });
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    }
};

TEST_F(FaultTest, WholeFileIsThereWithAllItsBytesOrNotAtAll)
{
    const std::string bytes = patternBytes(9'000);
    const auto make = [&](const WCHAR* path) { return makeWholeFile(path, std::as_bytes(std::span(bytes))); };
    std::filesystem::create_directory_symlink(outside(), root() / "link");
    hostWrite(root() / "sub/old", "old");
    for (const auto& [path, error] : {std::pair(u"\\sub\\new", 0),
                                      {u"\\new", 0},
                                      {u"\\sub\\old", ERROR_ALREADY_EXISTS},
                                      {u"\\sub", ERROR_ALREADY_EXISTS},
                                      {u"\\none\\new", ERROR_PATH_NOT_FOUND},
                                      {u"\\link\\new", ERROR_PATH_NOT_FOUND},
                                      {u"\\a*", ERROR_INVALID_NAME}})
        EXPECT_EQ(make(path), static_cast<DWORD>(error)) << std::filesystem::path(path);
    EXPECT_EQ(hostRead(root() / "sub/old"), "old");
    EXPECT_EQ(hostRead(root() / "sub/new"), bytes);
    EXPECT_EQ(readAll(u"\\new"), bytes);
    addFolder(u"Card", true, 100'000);
    EXPECT_EQ(make(u"\\Card\\new"), DWORD{ERROR_NOT_SUPPORTED}) << "its room has to be counted";

    const std::uint64_t calls = hostCallsOf([&] { make(u"\\sub\\first"); });
    for (const FaultKind kind : {FaultKind::Fail, FaultKind::Kill}) {
        for (std::uint64_t call = 1; call <= calls; call++) {
            SCOPED_TRACE(call);
            std::filesystem::remove(root() / "sub/new");
            const int status = statusOfChild([&] {
                setFaultPlan({kind, call, EIO});
                return make(u"\\sub\\new") != 0;
            });
            EXPECT_TRUE(kind == FaultKind::Kill ? WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL : status == 0)
                << "it isn't reported";
            EXPECT_EQ(list(u"\\sub\\*"), (std::set<std::u16string>{u"first", u"old"}));
        }
    }
}

TEST_F(FaultTest, FileInADeepFolderIsMadeOrTheCallFailsWhicheverCallOfTheHostFails)
{
    std::filesystem::create_directories(root() / "a/b/c");
    std::filesystem::create_directories(root() / "d/e/f");
    const auto makeOne = [] { return openError(u"\\a\\b\\c\\new", GENERIC_WRITE, CREATE_ALWAYS); };
    const auto startOver = [&] {
        std::filesystem::remove(root() / "a/b/c/new");
        make(u"\\d\\e\\f\\other", "");  // so that the folder is opened again
    };
    startOver();
    const std::uint64_t calls = hostCallsOf(makeOne);
    std::set<DWORD> errors;
    for (std::uint64_t call = 1; call <= calls; call++) {
        SCOPED_TRACE(call);
        startOver();
        setFaultPlan({FaultKind::Fail, call, EIO});
        const DWORD error = makeOne();
        clearFaultPlan();
        EXPECT_EQ(std::filesystem::exists(root() / "a/b/c/new"), error == 0);
        errors.insert(error);
    }
    EXPECT_TRUE(errors.contains(0)) << "the file can be made without keeping its folder open";
    EXPECT_EQ(errors.size(), 2U);
}

TEST_F(FaultTest, ReadErrorComesAfterTheBytesBeforeIt)
{
    const std::string bytes = patternBytes(50'000);
    hostWrite(root() / "f", bytes);
    HANDLE file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    std::string got;
    setFaultPlan({FaultKind::Fail, 3, EIO});  // calls 1 and 2 read 4096 and 8192 bytes ahead
    for (std::string piece(1000, 0); piece.size() == 1000; got += piece)
        piece = read(file, 1000);
    EXPECT_EQ(got, bytes) << "a read that fails ahead is repeated with the size that the caller asked for";
    CloseHandle(file);

    file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    std::string buffer(40'000, '\0');
    DWORD count = 0;
    EXPECT_EQ(read(file, 4000).size(), 4000U);
    setFaultPlan({FaultKind::Fail, 1, EIO});
    EXPECT_EQ(errorOf(ReadFile(file, buffer.data(), 40'000, &count, nullptr)), ERROR_GEN_FAILURE);
    EXPECT_EQ(count, 96U);
    EXPECT_EQ(buffer.substr(0, 96), bytes.substr(4000, 96));
    EXPECT_EQ(read(file, 10), bytes.substr(4096, 10)) << "the offset grows by the bytes that were read";
    CloseHandle(file);

    file = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    setFaultPlan({FaultKind::ShortRead, 1, 0});
    EXPECT_EQ(read(file, 60'000), "");
    EXPECT_EQ(read(file, 60'000), bytes);
    CloseHandle(file);
}

TEST_F(FaultTest, HostErrorsBecomeThePlatformsNumbers)
{
    hostWrite(root() / "f", "x");
    const std::pair<int, DWORD> cases[] = {{EROFS, ERROR_WRITE_PROTECT},       {ENOSPC, ERROR_DISK_FULL},
                                           {EDQUOT, ERROR_DISK_FULL},          {EACCES, ERROR_ACCESS_DENIED},
                                           {EIO, ERROR_GEN_FAILURE},           {ESTALE, ERROR_GEN_FAILURE},
                                           {ETXTBSY, ERROR_SHARING_VIOLATION}, {EMFILE, ERROR_TOO_MANY_OPEN_FILES}};
    for (const auto& [hostError, expected] : cases) {
        setFaultPlan({FaultKind::Fail, 1, hostError});
        EXPECT_EQ(openError(u"\\new", GENERIC_WRITE, CREATE_NEW), expected) << hostError;
        setFaultPlan({FaultKind::Fail, 1, hostError});
        EXPECT_EQ(openError(u"\\f", GENERIC_READ, OPEN_EXISTING), expected) << hostError;
    }
}

TEST_F(FaultTest, FileWhoseAttributesCannotBeReadIsNeitherReplacedNorDeletedAndOneWithoutALeaseIsNotInUse)
{
    hostWrite(root() / "rom", "bytes");
    hostMark(root() / "rom", "0x40");
    for (std::uint64_t nth = 1; nth < 15; ++nth) {
        setFaultPlan({FaultKind::Fail, nth, EIO});
        EXPECT_NE(openError(u"\\rom", GENERIC_WRITE, CREATE_ALWAYS), 0U);
        setFaultPlan({FaultKind::Fail, nth, EIO});
        EXPECT_FALSE(DeleteFileW(u"\\rom"));
        setFaultPlan({FaultKind::Fail, nth, EINVAL});
        EXPECT_NE(openError(u"\\rom", GENERIC_READ, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
        EXPECT_EQ(hostRead(root() / "rom"), "bytes");
    }
}

TEST_F(FaultTest, ListWrittenAfterADataFileNeverNamesDataThatTheHostDoesNotHaveYet)
{
    constexpr std::size_t Start = 40'000;  // from this size on, writes are gathered
    const auto begin = [](HANDLE& data, HANDLE& list) {
        data = open(u"\\data", GENERIC_WRITE, CREATE_ALWAYS);
        list = open(u"\\list", GENERIC_WRITE, CREATE_ALWAYS);
        return write(data, patternBytes(Start)) == Start && write(list, patternBytes(Start)) == Start;
    };
    // Each entry of the list is the length of the data at that time.
    const auto add = [](HANDLE data, HANDLE list, std::size_t& length) {
        length += write(data, patternBytes(40));
        return write(list, std::to_string(length) + "\n");
    };
    const auto lastEntry = [this] {
        const std::string list = hostRead(root() / "list");
        const std::size_t end = list.rfind('\n');
        return end == std::string::npos || end < Start ? Start : std::stoul(list.substr(list.rfind('\n', end - 1) + 1));
    };
    bool ended = false;
    for (std::uint64_t n = 1; !ended; n++) {
        SCOPED_TRACE(n);
        ended = statusOfChild([&] {
                    HANDLE data = nullptr;
                    HANDLE list = nullptr;
                    std::size_t length = Start;
                    bool good = begin(data, list) && WriteAfter(list, data);
                    setFaultPlan({.kind = FaultKind::Kill, .nthCall = n});
                    for (int entry = 1; entry <= 12'000; entry++) {
                        good = good && add(data, list, length) != 0;
                        good = good && (entry % 700 != 0 || HandOverFileBuffers(list));
                    }
                    return good;
                }) == 0;
        ASSERT_LE(lastEntry(), std::filesystem::file_size(root() / "data"));
    }
    EXPECT_GT(lastEntry(), 500'000U);

    HANDLE data = nullptr;
    HANDLE list = nullptr;
    std::size_t length = Start;
    ASSERT_TRUE(begin(data, list));
    ASSERT_TRUE(WriteAfter(list, data));
    EXPECT_GT(add(data, list, length), 0U);
    hostCallsOf([&] { EXPECT_EQ(errorOf(HandOverFileBuffers(list)), ERROR_GEN_FAILURE); },
                {.nthCall = 1, .error = EIO});
    EXPECT_EQ(hostRead(root() / "list").substr(0, Start), patternBytes(Start));
    EXPECT_EQ(lastEntry(), Start);
    EXPECT_EQ(SetFilePointer(list, Start, nullptr, FILE_BEGIN), Start);
    EXPECT_TRUE(SetEndOfFile(list)) << "cut where it is whole";
    EXPECT_FALSE(write(list, "after lost data") == 15U && HandOverFileBuffers(list));
    EXPECT_EQ(errorOf(WriteAfter(data, list)), ERROR_INVALID_PARAMETER) << "they would wait for each other";
    EXPECT_EQ(errorOf(WriteAfter(list, list)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(errorOf(WriteAfter(list, nullptr)), ERROR_INVALID_HANDLE);
    ASSERT_TRUE(DeclareTemporaryFile(u"\\temporary"));
    const HANDLE temporary = open(u"\\temporary", GENERIC_WRITE, CREATE_ALWAYS);
    EXPECT_EQ(errorOf(WriteAfter(temporary, data)), ERROR_INVALID_PARAMETER) << "it has no bytes to order";
    CloseHandle(temporary);
    EXPECT_TRUE(DeleteFileW(u"\\temporary") && WithdrawTemporaryFile(u"\\temporary"));
    CloseHandle(list);
    CloseHandle(data);
    const HANDLE reader = open(u"\\list", GENERIC_READ, OPEN_EXISTING);
    const HANDLE writer = open(u"\\data", GENERIC_WRITE, OPEN_EXISTING);
    EXPECT_EQ(errorOf(WriteAfter(writer, reader)), ERROR_ACCESS_DENIED);
    CloseHandle(reader);
    CloseHandle(writer);
}

// Opens `\\f`, marks it as unfinished and writes six pieces. The first two go to the host at once. The next two are
// buffered. The long piece goes to the host together with them. The last piece is buffered, and the file layer reserves
// space for it.
HANDLE openUnfinished(std::string& content)
{
    const HANDLE file = CreateFileW(u"\\f", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_TRUE(MarkFinished(file)) << "it is finished already";
    EXPECT_TRUE(MarkUnfinished(file));
    content.clear();
    for (const std::size_t size : {3, 2000, 5, 7, 60'000, 4}) {
        const std::string piece = patternBytes(size);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(file, piece.data(), static_cast<DWORD>(size), &written, nullptr));
        content += piece;
    }
    return file;
}

void cutAt(HANDLE file, std::string& content, std::size_t size)
{
    SetFilePointer(file, static_cast<LONG>(size), nullptr, FILE_BEGIN);
    EXPECT_TRUE(SetEndOfFile(file));
    content.resize(size);
}

TEST_F(FaultTest, UnfinishedFileEndsWithAMarkUntilItIsFinished)
{
    std::string content;
    const HANDLE file = openUnfinished(content);
    const auto expectOnHost = [&](const std::string& mark) {
        EXPECT_TRUE(HandOverFileBuffers(file));
        EXPECT_EQ(hostRead(root() / "f"), content + mark);
        BY_HANDLE_FILE_INFORMATION information = {};
        EXPECT_TRUE(GetFileInformationByHandle(file, &information));
        EXPECT_EQ(information.nFileSizeLow, content.size());
        EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_END), content.size());
    };
    const std::string mark(1, '\0');
    expectOnHost(mark);
    SetFilePointer(file, 100, nullptr, FILE_BEGIN);
    EXPECT_EQ(write(file, "in the middle"), 13U);
    content.replace(100, 13, "in the middle");
    expectOnHost(mark);
    cutAt(file, content, 50'000);
    expectOnHost(mark);
    for (const std::string end : {"longer", "again"}) {
        EXPECT_EQ(write(file, end), end.size());
        content += end;
        expectOnHost(mark);
    }
    EXPECT_TRUE(MarkFinished(file));
    expectOnHost("");
    CloseHandle(file);

    const HANDLE reader = open(u"\\f", GENERIC_READ, OPEN_EXISTING);
    const HANDLE both = open(u"\\both", GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
    EXPECT_EQ(errorOf(MarkUnfinished(both)), ERROR_INVALID_PARAMETER);
    for (const auto call : {MarkUnfinished, MarkFinished}) {
        EXPECT_EQ(errorOf(call(reader)), ERROR_ACCESS_DENIED);
        EXPECT_EQ(errorOf(call(nullptr)), ERROR_INVALID_HANDLE);
    }
    CloseHandle(reader);
    CloseHandle(both);
}

// The plan makes the call that writes the mark fail as on a full disk. The host can refuse the bytes before the mark,
// too.
TEST_F(FaultTest, MarkForWhichThereIsNoRoomCostsNoBytes)
{
    std::string content;
    const HANDLE file = openUnfinished(content);
    hostCallsOf([&] { EXPECT_TRUE(HandOverFileBuffers(file)); }, {.nthCall = 1, .error = ENOSPC});
    EXPECT_EQ(hostRead(root() / "f").substr(0, content.size()), content);
    SetFilePointer(file, 70'000, nullptr, FILE_BEGIN);
    hostCallsOf([&] { EXPECT_TRUE(SetEndOfFile(file)); }, {.nthCall = 2, .error = ENOSPC});
    content.resize(70'000);
    EXPECT_EQ(hostRead(root() / "f"), content) << "lengthened without the mark";
    CloseHandle(file);

    const auto card = addFolder(u"Card", true, 103);
    const HANDLE full = open(u"\\Card\\f", GENERIC_WRITE, CREATE_NEW);
    EXPECT_TRUE(MarkUnfinished(full));
    EXPECT_EQ(write(full, std::string(100, 'f')), 100U);
    EXPECT_EQ(write(full, std::string("\x11\x22\x33\0", 4)), 3U);
    EXPECT_EQ(std::filesystem::file_size(card / "f"), 103U) << "no mark that completes the cut number";
    SetFilePointer(full, 100, nullptr, FILE_BEGIN);
    EXPECT_TRUE(SetEndOfFile(full));
    EXPECT_EQ(std::filesystem::file_size(card / "f"), 101U);
    CloseHandle(full);
}

TEST_F(FaultTest, UnfinishedFileKeepsItsMarkWhenFinishingItFails)
{
    bool reached = true;
    for (std::uint64_t n = 1; reached; n++) {
        SCOPED_TRACE(n);
        std::string content;
        const HANDLE file = openUnfinished(content);
        EXPECT_TRUE(HandOverFileBuffers(file));
        BOOL finished = FALSE;
        reached = hostCallsOf([&] { finished = MarkFinished(file); }, {.nthCall = n, .error = EIO}) >= n;
        EXPECT_EQ(hostRead(root() / "f"), finished ? content : content + '\0');
        CloseHandle(file);
    }
}

TEST_F(FaultTest, UnfinishedFileKeepsItsMarkWhenLaterBytesAreLost)
{
    std::string content;
    const HANDLE file = openUnfinished(content);
    EXPECT_TRUE(HandOverFileBuffers(file));
    EXPECT_EQ(write(file, "lost"), 4U);
    hostCallsOf([&] { EXPECT_FALSE(HandOverFileBuffers(file)); }, {.nthCall = 1, .error = EIO});
    CloseHandle(file);
    EXPECT_EQ(hostRead(root() / "f"), content + '\0') << "closing it gives the reserved space back";

    const auto card = addFolder(u"Card", true, 62'021);
    const HANDLE full = open(u"\\Card\\f", GENERIC_WRITE, CREATE_NEW);
    EXPECT_TRUE(MarkUnfinished(full));
    for (const std::size_t size : {62'000, 19})
        EXPECT_EQ(write(full, patternBytes(size)), size);
    EXPECT_TRUE(HandOverFileBuffers(full));
    EXPECT_EQ(write(full, "refused"), 2U);
    hostCallsOf([&] { EXPECT_FALSE(HandOverFileBuffers(full)); }, {.nthCall = 1, .error = EIO});
    CloseHandle(full);
    EXPECT_EQ(std::filesystem::file_size(card / "f"), 62'020U) << "the two bytes are lost, too";
}

TEST_F(FaultTest, KilledProcessLeavesAByteAfterTheEndOfAnUnfinishedFile)
{
    bool ended = false;
    for (std::uint64_t n = 1; !ended; n++) {
        ended = statusOfChild([&] {
                    std::string content;
                    const HANDLE file = openUnfinished(content);
                    EXPECT_TRUE(HandOverFileBuffers(file));
                    setFaultPlan({.kind = FaultKind::Kill, .nthCall = n});
                    for (const std::size_t size : {60'000, 50'000, 49'999, 40'000})
                        cutAt(file, content, size);
                    return true;
                }) == 0;
        const std::size_t size = std::filesystem::file_size(root() / "f") - 1;
        EXPECT_TRUE(size == 62'019 || size == 60'000 || size == 50'000 || size == 49'999 || size == 40'000) << size;
    }
}

TEST_F(FaultTest, OnlyFlushedBytesAndFoldersSurviveAPowerCut)
{
    const auto card = addFolder(u"Card", true);
    const std::string bytes = patternBytes(90'000);
    // Two kinds of flush: FlushChangedVolumes for the file on the card, FlushFileBuffers for the file in the root.
    cutPowerAtTheEndOf([&] {
        const auto made = [](const std::u16string& folder) {
            CreateDirectoryW(folder.c_str(), nullptr);
            return open(folder + u"\\f", GENERIC_WRITE, CREATE_NEW);
        };
        const auto append = [&](HANDLE file, std::size_t from, std::size_t to) {
            for (; from < to; from += 250)  // so that bytes are gathered at the flush
                (void)write(file, bytes.substr(from, 250));
        };
        const HANDLE onCard = made(u"\\Card\\d");
        append(onCard, 0, 50'000);
        EXPECT_TRUE(FlushChangedVolumes());
        const HANDLE inRoot = made(u"\\d");
        append(inRoot, 0, 50'000);
        EXPECT_TRUE(FlushFileBuffers(inRoot));
        CloseHandle(made(u"\\lost"));
        for (const HANDLE file : {onCard, inRoot}) {
            append(file, 50'000, 90'000);
            CloseHandle(file);
        }
        (void)GetFileAttributesW(u"\\");
    });
    EXPECT_EQ(hostRead(root() / "d" / "f"), bytes.substr(0, 50'000));
    EXPECT_EQ(hostRead(card / "d" / "f"), bytes.substr(0, 50'000));
    EXPECT_FALSE(std::filesystem::exists(root() / "lost"));
}

TEST_F(FaultTest, FlushOfAllVolumesIsOneCallForEachFileSystemThatChanged)
{
    addFolder(u"Card", true);
    const auto callsOfFlush = [](DWORD error = 0, const FaultPlan& plan = {}) {
        return hostCallsOf([&] { EXPECT_EQ(errorOf(FlushChangedVolumes()), error); }, plan);
    };
    (void)callsOfFlush();
    EXPECT_EQ(callsOfFlush(), 0U);
    const std::pair<const char*, std::function<bool()>> changes[] = {
        {"make", [] { return openError(u"\\Card\\f", GENERIC_WRITE, CREATE_NEW) == 0; }},
        {"write",
         [] {
             const HANDLE file = open(u"\\Card\\f", GENERIC_WRITE, OPEN_EXISTING);
             return write(file, "x") == 1 && CloseHandle(file) != FALSE;
         }},
        {"cut", [] { return openError(u"\\Card\\f", GENERIC_WRITE, CREATE_ALWAYS) == 0; }},
        {"move", [] { return moveFile(u"\\Card\\f", u"\\Card\\g", false) == 0; }},
        {"delete", [] { return DeleteFileW(u"\\Card\\g") != FALSE; }},
        {"folder", [] { return CreateDirectoryW(u"\\Card\\d", nullptr) != FALSE; }},
        {"both", [] { return CreateDirectoryW(u"\\Card\\e", nullptr) && CreateDirectoryW(u"\\e", nullptr); }},
    };
    for (const auto& [name, change] : changes) {
        EXPECT_TRUE(change()) << name;
        EXPECT_EQ(callsOfFlush(), 1U) << name;
        EXPECT_EQ(callsOfFlush(), 0U) << name;
    }
    EXPECT_EQ(openError(u"\\none", GENERIC_WRITE, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(callsOfFlush(), 0U);

    (void)takeNoted();
    EXPECT_TRUE(CreateDirectoryW(u"\\Card\\h", nullptr));
    EXPECT_EQ(callsOfFlush(ERROR_GEN_FAILURE, {FaultKind::Fail, 1, EIO}), 1U);
    EXPECT_EQ(takeNoted(), std::set<std::u16string>{u"write \\Card"});
    EXPECT_EQ(callsOfFlush(), 1U) << "after a failure it is still to be flushed";
}

}  // namespace
