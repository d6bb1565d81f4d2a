// shown_sets.h - the files and folders that the mount shows: a folder for each set, its files, and their content.
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

// A node of a set's tree. The sets are numbered from 1. Node 0 of set 0 is the folder of all sets.
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
    // False if the size isn't known or wasn't asked for. `bytes` is then 0, or 1 if the item's text couldn't be written
    // to a file (see ItemText::bytes).
    bool areFinal;
};

// The result of a read. Only one of the three members is set. Keep the Content until its bytes have been copied.
struct Content {
    std::vector<Piece> pieces;
    std::shared_ptr<const ItemText> text;
    std::string_view note;
};

// Which sizes the caller of attributes() wants. It takes long to determine the size of a text, because the text has to
// be written first.
enum class Sizes { None, IfQuick, All };

// After construction, the functions can be called on any thread. Those that return an int return 0 or an errno. ENOENT
// means that the name or the node doesn't exist. EIO means that there is damage or that the set can't be read.
class ShownSets {
public:
    // Reads the dates of the sets.
    explicit ShownSets(const std::vector<archive::SetFiles>& sets);

    // If there is only one set, reads its list. If there are several sets, does nothing. The list of each set is then
    // read at the first request for the set, because there may be very many sets.
    void readSingle();

    [[nodiscard]] int find(Place folder, std::string_view name, Place& found);
    [[nodiscard]] int attributes(Place place, Sizes sizes, Attributes& found);

    struct Child {
        Place place;
        std::string_view name;
    };
    // Returns ENOENT if the folder has no child of this index.
    [[nodiscard]] int child(Place folder, std::size_t index, Child& found);
    Place parent(Place place);

    // Determines the sizes of some files that follow `place` in its set. A client that lists one folder often lists the
    // next folder and asks for these sizes.
    void measureAfter(Place place);

    // Reads the bytes from `offset` on, but not beyond the end of the file. If `file` is an item that is shown as text
    // (Node::Kind::Text), `content` gets the whole text.
    [[nodiscard]] int read(Place file, std::uint64_t offset, std::uint64_t bytes, Content& content);

    // Stops the search for blocks in all streams, so calls return soon. From then on, a block whose offset isn't known
    // yet counts as damaged.
    void end() { ends_ = true; }

    // Reads all bytes of a file. Returns false if the file has more than `most` bytes, if its size isn't known yet, if
    // it can't be read, or if `file` isn't an item that is shown as a file.
    [[nodiscard]] bool readSmall(Place file, std::uint64_t most, Content& content);

private:
    // The parts of a set that are read when the set is needed for the first time.
    struct Loaded {
        Loaded(std::unique_ptr<const SetTree>&& ofSet, DataFile&& opened)
            : tree(std::move(ofSet)), data(std::move(opened)), sizes(tree->size())
        {
        }

        std::unique_ptr<const SetTree> tree;
        DataFile data;
        std::vector<std::atomic<std::uint64_t>> sizes;  // the size of each file plus 1, or 0 if it isn't known yet
        std::atomic<std::uint32_t> measuredEnd = 0;     // the first node after those that measureAfter() measured
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
