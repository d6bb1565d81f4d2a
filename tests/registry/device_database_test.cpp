#include "database/device_database.h"
#include "registry/registry_content.h"
#include "registry_fixture.h"

#include <gmock/gmock.h>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <span>

namespace {

using platform::database::DatabaseUse;
using platform::database::Step;
using platform::database::Transaction;
using testing::HasSubstr;

class DeviceDatabaseTest : public RegistryFixture {
protected:
    void changeAndClose(const std::string& sql)
    {
        ASSERT_EQ(open(), "");
        ASSERT_EQ(DatabaseUse()->execute(sql), Step::Done);
        platform::registry::closeRegistry();
    }
    [[nodiscard]] static bool import(const std::u16string& keys)
    {
        const std::u16string text = RegistryTextHead + keys;
        auto unread = std::as_bytes(std::span(text));
        const auto source = [&](std::span<std::byte> buffer) {
            const auto piece = unread.first(std::min(buffer.size(), unread.size()));
            std::ranges::copy(piece, buffer.begin());
            unread = unread.subspan(piece.size());
            return piece.size();
        };
        using namespace platform::registry;
        return readContent(source, Wholeness::Free, Unnamed::Removed).good();
    }
    // Returns the error of the open. Expects that the file is unchanged.
    [[nodiscard]] std::string refusal() const
    {
        const std::string before = hostRead(file());
        std::string sentence = open();
        EXPECT_EQ(hostRead(file()), before);
        EXPECT_FALSE(DatabaseUse());
        return sentence;
    }
};

TEST_F(DeviceDatabaseTest, FileOfAnotherProgramOrVersionIsRefusedAndUnchanged)
{
    const std::pair<const char*, const char*> cases[] = {
        {"application_id = 5", "is not the database of a Quillbox device"},
        {"user_version = 9999", "newer version of Quillbox (schema 9999"},
        {"user_version = 0", "is damaged"},
        {"user_version = -1", "is damaged"},
        {"user_version = -2147483648", "is damaged"},
    };
    for (const auto& [pragma, sentence] : cases) {
        changeAndClose(std::string("PRAGMA ") + pragma);
        EXPECT_THAT(refusal(), HasSubstr(sentence)) << pragma;
        std::filesystem::remove(file());
    }
}

// An enumeration reads only the index and not the table, so damage in the index must be found, too.
TEST_F(DeviceDatabaseTest, ChangedBitInAnIndexIsDamage)
{
    changeAndClose("INSERT INTO store_database (oid, name, folded, type, modified) VALUES (5, 'a', 'a', 0, 0); "
                   "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200) "
                   "INSERT INTO store_record (database, properties) SELECT 5, X'' FROM n");
    ASSERT_EQ(open(), "");
    const auto root =
        DatabaseUse()->readNumber("SELECT rootpage FROM sqlite_schema WHERE name = 'store_record_database'");
    platform::registry::closeRegistry();
    std::string damaged = hostRead(file());
    const std::size_t page = (static_cast<std::size_t>(root.value()) - 1) * 4096;
    ASSERT_EQ(damaged[page], 0x0A);  // a leaf page of an index
    const std::size_t pointer = page + 8 + 2 * std::size_t{100};
    const std::size_t cell = page + static_cast<unsigned char>(damaged[pointer]) * std::size_t{256} +
                             static_cast<unsigned char>(damaged[pointer + 1]);
    ASSERT_EQ(damaged[cell + 4], 5);  // the byte after the sizes of cell and header and two types
    damaged[cell + 4] ^= 2;
    hostWrite(file(), damaged);
    EXPECT_THAT(refusal(), HasSubstr("is damaged"));
}

// Without this, SQLite would make a new database and delete the log beside it.
TEST_F(DeviceDatabaseTest, LogWhoseDatabaseIsMissingOrEmptyIsKeptUnderAnotherName)
{
    const std::filesystem::path log = file().string() + "-wal";
    for (const bool empty : {false, true}) {
        const pid_t child = fork();
        if (child == 0)
            _exit(open().empty() && DatabaseUse()->execute("PRAGMA user_version = 2") == Step::Done ? 0 : 1);
        waitpid(child, nullptr, 0);
        std::filesystem::remove(file());
        if (empty)
            hostWrite(file(), "");
        const std::string changes = hostRead(log);
        ASSERT_FALSE(changes.empty());
        const std::string kept = log.string() + (empty ? ".kept2" : ".kept");
        EXPECT_THAT(open(), HasSubstr("kept as \"" + kept));
        EXPECT_TRUE(hostRead(kept) == changes);
        platform::registry::closeRegistry();
        std::filesystem::remove(file());
    }
}

TEST_F(DeviceDatabaseTest, DamageIsFoundBeforeAnythingIsWritten)
{
    changeAndClose("PRAGMA user_version");
    const std::string whole = hostRead(file());
    ASSERT_GT(whole.size(), 8192U);
    std::string scrambled = whole;
    scrambled.replace(4096, 4096, 4096, '\xA5');
    for (const std::string& damaged :
         {std::string("no database at all, but long enough to look at").append(600, '.'), whole.substr(0, 4096),
          scrambled, std::string("x"), whole.substr(0, 99), whole.substr(0, 511), std::string(4096, '\0')}) {
        hostWrite(file(), damaged);
        EXPECT_THAT(refusal(), HasSubstr("is damaged"));
    }
}

TEST_F(DeviceDatabaseTest, DatabaseThatAnotherProcessHoldsIsRefusedAtOnce)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (open().empty())
            raise(SIGSTOP);
        _exit(1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, WUNTRACED), child);
    ASSERT_TRUE(WIFSTOPPED(status)) << "it couldn't open the database";
    EXPECT_THAT(open(), HasSubstr("is open in another program"));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(open(), "");
}

TEST_F(DeviceDatabaseTest, ErrorNamesTheMissingFolder)
{
    std::string error;
    EXPECT_FALSE(platform::database::openDeviceDatabase(file().parent_path() / "nowhere" / "device.db", error));
    EXPECT_THAT(error, HasSubstr("nowhere/device.db\" can't be opened"));
}

TEST_F(DeviceDatabaseTest, WithoutATransactionOrItsCommitNothingIsChanged)
{
    ASSERT_EQ(open(), "");
    ASSERT_EQ(DatabaseUse()->execute("BEGIN"), Step::Done);  // no other transaction can begin inside this one
    HKEY key = nullptr;
    EXPECT_NE(make(HKEY_USERS, u"a\\b", key), 0);
    EXPECT_FALSE(import(u"[HKEY_USERS\\c]\r\n"));
    ASSERT_EQ(DatabaseUse()->execute("COMMIT"), Step::Done);

    const DatabaseUse use;
    const auto keys = [&] { return use->readNumber("SELECT count(*) FROM registry_key"); };
    for (const bool commits : {false, true}) {
        EXPECT_EQ(keys(), 4);
        Transaction transaction(*use);
        auto insertion = use->prepare("INSERT INTO registry_key (parent, name, folded) VALUES (?, ?, ?)");
        ASSERT_EQ(insertion.bind(1, std::u16string(u"Ключ"), std::u16string(u"ключ")).step(), Step::Done);
        if (commits) {
            ASSERT_EQ(transaction.commit(), Step::Done);
        }
    }
    EXPECT_EQ(keys(), 5);
}

}  // namespace
