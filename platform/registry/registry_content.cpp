#include "registry/registry_content.h"

#include "database/device_database.h"
#include "registry_rows.h"

#include <algorithm>
#include <span>
#include <vector>

namespace platform::registry {

namespace {

using database::Connection;
using database::DatabaseUse;
using database::Step;
using database::Transaction;

// Returns false if reading or writing fails, or if the database contains a value that is larger than the platform's
// calls allow (ValueBytesLimit).
bool writeValues(Connection& connection, RegistryTextWriter& writer, std::int64_t key)
{
    auto values = valuesOf(connection, key);
    for (;;) {
        const Step step = values.step();
        if (step != Step::Row)
            return step == Step::Done;
        const auto data = values.bytes(2);
        if (data.size() > ValueBytesLimit || !writer.value(values.text(0), static_cast<DWORD>(values.integer(1)), data))
            return false;
    }
}

// Writes a key and all below it. Returns false if reading or writing fails. Also returns false if a key lies more
// levels below its predefined key than the platform's calls allow (LevelLimit). This check limits the depth of the
// recursion.
bool writeKey(Connection& connection, RegistryTextWriter& writer, KeyPath& path,  // NOLINT(misc-no-recursion)
              std::int64_t row)
{
    if (path.levels.size() > LevelLimit || !writer.key(path) || !writeValues(connection, writer, row))
        return false;
    auto keys = keysBelow(connection, row);
    for (;;) {
        const Step step = keys.step();
        if (step != Step::Row)
            return step == Step::Done;
        path.levels.push_back(keys.text(1));
        if (!writeKey(connection, writer, path, keys.integer(0)))
            return false;
        path.levels.pop_back();
    }
}

// Puts keys and values into the tables.
class Rows final : public RegistryTextSink {
public:
    explicit Rows(Connection& connection) : connection_(connection) {}

    bool key(const KeyPath& path) override
    {
        // A file usually has the keys in the order of their paths. So a key often shares its first levels with the key
        // before it, and the rows of these levels are used again.
        std::size_t known = 0;
        if (path.root == path_.root)
            known =
                static_cast<std::size_t>(std::ranges::mismatch(path.levels, path_.levels).in1 - path.levels.begin());
        path_ = path;
        rows_.resize(known);
        while (rows_.size() < path.levels.size()) {
            FoundKey found;
            step_ = openOrMakeKey(connection_, row(), path.levels[rows_.size()], found);
            if (step_ != Step::Done)
                return false;
            rows_.push_back(found.row);
        }
        return true;
    }
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) override
    {
        step_ = writeValue(connection_, row(), name, type, data);
        return step_ == Step::Done;
    }

    bool removedKey(const KeyPath& path) override
    {
        path_ = {path.root, {}};  // the rows in rows_ may be below the removed key
        rows_.clear();
        std::int64_t parent = path.root;
        for (std::size_t level = 0; level + 1 < path.levels.size(); ++level) {
            step_ = findKey(connection_, parent, path.levels[level], parent);
            if (step_ != Step::Row)
                return step_ == Step::Done;
        }
        step_ = removeKey(connection_, parent, path.levels.back());
        return step_ == Step::Done;
    }
    bool removedValue(std::u16string_view name) override
    {
        step_ = removeValue(connection_, row(), name);
        return step_ == Step::Done;
    }

    // The result of the last change.
    [[nodiscard]] Step step() const { return step_; }

private:
    [[nodiscard]] std::int64_t row() const { return rows_.empty() ? path_.root : rows_.back(); }

    Connection& connection_;
    KeyPath path_;
    std::vector<std::int64_t> rows_;  // of the levels of path_
    Step step_ = Step::Done;
};

}  // namespace

bool writeContent(const RegistryTextWriter::Output& output)
{
    const DatabaseUse database;
    if (!database)
        return false;
    RegistryTextWriter writer(output);
    for (std::int64_t root = ClassesRootRow; root <= UsersRow; ++root) {
        KeyPath path{root, {}};
        if (!writeKey(*database, writer, path, root))
            return false;
    }
    return writer.finish();
}

ContentRead readContent(const RegistryTextSource& source, Wholeness wholeness, Unnamed unnamed)
{
    ContentRead result;
    const DatabaseUse database;
    if (!database)
        return {Step::Failed, {}};
    Transaction transaction(*database);
    result.step = transaction.begun();
    if (result.step == Step::Done && unnamed == Unnamed::Removed)
        result.step = removeEverything(*database);
    if (result.step != Step::Done)
        return result;
    Rows rows(*database);
    result.fault = readRegistryText(source, wholeness, rows);
    result.step = rows.step();
    if (result.good())
        result.step = transaction.commit();
    return result;
}

}  // namespace platform::registry
