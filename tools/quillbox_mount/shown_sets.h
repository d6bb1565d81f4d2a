// shown_sets.h - all that the mount shows: a folder for each set, its files, and their content.
#pragma once

#include "archive/set_files.h"
#include "bounded_cache.h"
#include "data_file.h"
#include "seekable_stream.h"
#include "set_reading.h"
#include "set_tree.h"

#include "kernel/mutex.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillbox_mount {

// A set, and a node of its tree. The folder of all sets is the node 0 of set 0, so the sets count from 1.
struct Place {
    std::uint32_t set = 0;
    std::uint32_t node = 0;

    bool isTop() const { return set == 0; }
    bool operator==(const Place&) const = default;
};

struct Attributes {
    bool isFolder;
    std::uint64_t bytes;
    std::time_t changed;
    bool areFinal;  // false: the size isn't known yet, and 0
};

// What a read found: one of the three. It must live until it has been copied.
struct Content {
    std::vector<Piece> pieces;
    std::shared_ptr<const ItemText> text;
    std::string_view note;
};

// Which sizes are asked for. That of a text takes long, because the text has to be written.
enum class Sizes { None, IfQuick, All };

// Any thread, after the constructor. The results of the calls are 0 or an errno: ENOENT without such a name or place,
// EIO for damage and for sets that can't be read.
class ShownSets {
public:
    // Reads the dates of the sets.
    explicit ShownSets(const std::vector<archive::SetFiles>& sets);

    // Reads the list of a set that is the only one. Otherwise the first request for a set reads its list, because a
    // card may have many sets.
    void readSingle();

    [[nodiscard]] int find(Place folder, std::string_view name, Place& found);
    [[nodiscard]] int attributes(Place place, Sizes sizes, Attributes& found);

    struct Child {
        Place place;
        std::string_view name;
    };
    // ENOENT if the folder has no more.
    [[nodiscard]] int child(Place folder, std::size_t index, Child& found);
    Place parent(Place place);

    // Finds out the sizes of some files that follow in the set. Somebody who lists one folder often lists the next.
    void measureAfter(Place place);

    // The bytes from `offset` on, and not more than there are.
    [[nodiscard]] int read(Place file, std::uint64_t offset, std::uint64_t bytes, Content& content);

    // From now on no call takes long. What isn't known yet counts as damaged.
    void end() { ends_ = true; }

    // All bytes of a file with at most `most` of them, if somebody has asked for its size. False for anything else.
    [[nodiscard]] bool readSmall(Place file, std::uint64_t most, Content& content);

private:
    // What is read of a set when it is needed first.
    struct Loaded {
        Loaded(std::unique_ptr<const SetTree>&& ofSet, DataFile&& opened)
            : tree(std::move(ofSet)), data(std::move(opened)), sizes(tree->size())
        {
        }

        std::unique_ptr<const SetTree> tree;
        DataFile data;
        std::vector<std::atomic<std::uint64_t>> sizes;  // of the files, plus 1. 0: not known yet.
        std::atomic<std::uint32_t> measuredEnd = 0;     // the files before it were measured ahead
    };
    struct Shown {
        Shown(std::uint32_t numberOfSet, const archive::SetFiles& filesOfSet, std::string nameOfFolder,
              std::time_t date)
            : number(numberOfSet), files(filesOfSet), name(std::move(nameOfFolder)), time(date)
        {
        }

        std::uint32_t number;
        archive::SetFiles files;
        std::string name;
        std::time_t time;
        std::unique_ptr<Loaded> owned;  // written once, by the thread that loads the set
        std::atomic<Loaded*> loaded = nullptr;
    };

    void add(const archive::SetFiles& files, const std::string& date, std::time_t time);
    Shown& shown(Place place) { return sets_[place.set - 1]; }
    Loaded* load(Shown& set) EXCLUDES(loading_);
    std::shared_ptr<SeekableStream> streamOf(const Shown& set, const Loaded& loaded, std::uint32_t node);
    std::shared_ptr<const ItemText> textOf(const Shown& set, const Loaded& loaded, std::uint32_t node);
    std::uint64_t sizeOf(const Shown& set, Loaded& loaded, std::uint32_t node);

    std::deque<Shown> sets_;
    std::time_t newest_ = 0;
    std::atomic<bool> ends_ = false;
    platform::kernel::Mutex loading_;
    SetReading reading_;
    BlockCache blocks_;
    BoundedCache<SeekableStream> streams_;
    BoundedCache<const ItemText> texts_;
};

}  // namespace quillbox_mount
