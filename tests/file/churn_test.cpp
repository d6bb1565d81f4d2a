// churn_test.cpp - one process changes files in every way while another copies and deletes them. Each deleted content
// is in a copy.
#include "file_fixture.h"

#include "ce/file_deletion.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <random>
#include <sstream>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int Files = 64;
constexpr std::size_t TokenBytes = 8;  // digits and a line end

std::vector<std::string> tokensOf(const std::string& content)
{
    std::vector<std::string> tokens;
    std::istringstream lines(content);
    for (std::string line; std::getline(lines, line);)
        tokens.push_back(line);
    return tokens;
}

// Shared by the two processes.
struct Common {
    std::atomic<bool> stop = false;
    std::atomic<int> next = 0;  // the file that is deleted next
};

// The process that changes files. Each token that it writes is unique, and required until the writer itself removes it.
class Writer {
public:
    explicit Writer(fs::path folder) : folder_(std::move(folder)) {}

    void work(const Common& common)
    {
        while (!common.stop) {
            if (++steps_ % 100 == 1)
                hot_ = pick(Files - 8);  // the other files rest and can be deleted
            step(folder_ / std::to_string(pick(2) == 0 ? common.next.load() : hot_ + pick(8)));
        }
        while (!held_.empty())
            letGoOne();
    }

    [[nodiscard]] const std::set<std::string>& required() const { return required_; }

private:
    void step(const fs::path& path)
    {
        switch (pick(5)) {
        case 0:
            return append(openFile(path));
        case 1:
            return overwrite(openFile(path));
        case 2:
            return replace(path);
        case 3:
            if (held_.size() < 4)
                held_.push_back(openFile(path));
            return;
        default:
            if (!held_.empty() && pick(200) == 0)  // long enough for the file to look settled
                letGoOne();
        }
    }

    [[nodiscard]] static struct stat statusOf(int file)
    {
        struct stat status = {};
        ::fstat(file, &status);
        return status;
    }

    // A deletion between finding and opening a file leaves a descriptor without a name. Careful programs check that.
    [[nodiscard]] static int openFile(const fs::path& path)
    {
        for (;;) {
            const int opened = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
            if (opened >= 0 && statusOf(opened).st_nlink != 0)
                return opened;
            ::close(opened);
        }
    }

    [[nodiscard]] static std::string readFrom(int file)
    {
        std::string content(100'000, '\0');
        content.resize(
            static_cast<std::size_t>(std::max<ssize_t>(0, ::pread(file, content.data(), content.size(), 0))));
        return content;
    }

    void put(int file, off_t offset)
    {
        const std::string token = std::to_string(++tokens_);
        (void)!::pwrite(file, (token + '\n').data(), TokenBytes, offset);
        required_.insert(token);
    }

    void takeAway(const std::string& content)
    {
        for (const std::string& token : tokensOf(content))
            required_.erase(token);
    }

    void append(int file)
    {
        put(file, statusOf(file).st_size);
        ::close(file);
    }

    // Keeps the length.
    void overwrite(int file)
    {
        takeAway(readFrom(file).substr(0, TokenBytes));
        put(file, 0);
        ::close(file);
    }

    void replace(const fs::path& path)
    {
        const fs::path beside = folder_ / "beside";
        const int replacing = openFile(beside);
        put(replacing, 0);
        ::close(replacing);
        const int old = openFile(path);
        takeAway(readFrom(old));
        fs::rename(beside, path);
        const ino_t replaced = statusOf(old).st_ino;
        std::erase_if(held_, [&](int file) { return statusOf(file).st_ino == replaced && ::close(file) == 0; });
        ::close(old);
    }

    void letGoOne()
    {
        append(held_.back());
        held_.pop_back();
    }

    [[nodiscard]] int pick(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

    fs::path folder_;
    std::mt19937 random_{4711};
    std::set<std::string> required_;
    std::vector<int> held_;
    int steps_ = 0;
    int tokens_ = 1'000'000;  // seven digits
    int hot_ = 0;
};

class ChurnTest : public FileTest {
protected:
    // Copies and deletes files of a folder in groups, as a run does, and checks that nothing is lost.
    void churn(const std::u16string& folder, const fs::path& hostFolder, int leastDeletions)
    {
        void* const page = ::mmap(nullptr, sizeof(Common), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(page, MAP_FAILED);
        auto* const common = new (page) Common();
        const pid_t writer = ::fork();
        if (writer == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            Writer churning(hostFolder);
            churning.work(*common);
            std::string required;
            for (const std::string& token : churning.required())
                required += token + '\n';
            hostWrite(outside() / "required", required);
            ::_exit(0);
        }
        int attempts = 0;
        int deletions = 0;
        for (int first = 0; attempts < 1000 || deletions < leastDeletions; first = (first + 16) % Files) {
            std::vector<Copy> group;
            for (int i = first; i < first + 16; ++i)
                copy(folder, i % Files, group);
            for (const Copy& each : group) {
                ++attempts;
                common->next = each.number;
                if (DeleteUnchangedFile(each.path.c_str(), &each.stamp)) {
                    ++deletions;
                    keep(each.content);
                }
            }
        }
        common->stop = true;
        int status = 0;
        ::waitpid(writer, &status, 0);
        ::munmap(page, sizeof(Common));
        EXPECT_EQ(status, 0);
        for (const auto& entry : fs::directory_iterator(hostFolder)) {
            if (entry.is_regular_file())
                keep(hostRead(entry.path()));
        }
        const std::vector<std::string> required = tokensOf(hostRead(outside() / "required"));
        EXPECT_FALSE(required.empty());
        for (const std::string& token : required)
            EXPECT_TRUE(kept_.contains(token)) << token << " is neither in a file nor in a copy";
    }

private:
    struct Copy {
        int number;
        std::u16string path;
        FileStamp stamp;
        std::string content;
    };

    static void copy(const std::u16string& folder, int number, std::vector<Copy>& group)
    {
        const std::u16string path = folder + u"\\" + fs::path(std::to_string(number)).u16string();
        const HANDLE file = open(path, GENERIC_READ, OPEN_EXISTING);
        if (file == INVALID_HANDLE_VALUE)
            return;
        Copy taken{number, path, {}, {}};
        if (GetFileStamp(file, &taken.stamp)) {
            taken.content = read(file, 100'000);
            group.push_back(std::move(taken));
        }
        CloseHandle(file);
    }

    void keep(const std::string& content)
    {
        for (std::string& token : tokensOf(content))
            kept_.insert(std::move(token));
    }

    std::set<std::string> kept_;
};

TEST_F(ChurnTest, NothingIsLostBesideAWriterThatNeverRests)
{
    fs::create_directory(root() / "d");
    churn(u"\\d", root() / "d", 200);
}

TEST_F(ChurnTest, NothingIsLostWhereTimesAreWholeSeconds)
{
    const fs::path image = outside() / "image";
    const fs::path folder = outside() / "coarse";
    fs::create_directory(folder);
    hostWrite(image, "");
    fs::resize_file(image, 16'000'000);
    // Inodes of 128 bytes have no room for a fraction of a second.
    const std::string commands =
        "mkfs.ext4 -q -I 128 " + image.string() + " && mount -o loop " + image.string() + " " + folder.string();
    if (std::system(commands.c_str()) != 0)
        GTEST_SKIP() << "needs mkfs.ext4, and the administrator to mount an image";
    ASSERT_TRUE(platform::file::addMount({u"Coarse", ::open(folder.c_str(), O_RDONLY | O_DIRECTORY), false, {}}));
    churn(u"\\Coarse", folder, 0);
    platform::file::removeAllMounts();
    EXPECT_EQ(::umount(folder.c_str()), 0);
}

}  // namespace
