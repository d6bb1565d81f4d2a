#include "registry_rows.h"

#include "text/case_folding.h"

#include <string>

namespace platform::registry {

namespace {

using database::Connection;
using database::Statement;
using database::Step;

std::u16string folded(std::u16string_view name)
{
    std::u16string result(name);
    for (char16_t& character : result)
        character = text::foldCase(character);
    return result;
}

}  // namespace

Step findKey(Connection& connection, std::int64_t parent, std::u16string_view name, std::int64_t& key)
{
    const std::u16string sought = folded(name);
    Statement find = connection.prepare("SELECT id FROM registry_key WHERE parent = ? AND folded = ?");
    const Step found = find.bind(parent, sought).step();
    if (found == Step::Row)
        key = find.integer(0);
    return found;
}

Step openOrMakeKey(Connection& connection, std::int64_t parent, std::u16string_view name, FoundKey& key)
{
    const Step found = findKey(connection, parent, name, key.row);
    key.made = found == Step::Done;
    if (found != Step::Done)
        return found == Step::Row ? Step::Done : found;

    const std::u16string sought = folded(name);
    Statement make = connection.prepare("INSERT INTO registry_key (parent, name, folded) VALUES (?, ?, ?)");
    const Step made = make.bind(parent, name, sought).step();
    key.row = connection.lastInsertId();
    return made;
}

Statement valueOf(Connection& connection, std::int64_t key, std::u16string_view name)
{
    Statement find = connection.prepare("SELECT type, data FROM registry_value WHERE key = ? AND folded = ?");
    find.bind(key, folded(name));
    return find;
}

Step writeValue(Connection& connection, std::int64_t key, std::u16string_view name, DWORD type,
                std::span<const std::byte> data)
{
    const std::u16string sought = folded(name);
    Statement write = connection.prepare("INSERT INTO registry_value (key, name, folded, type, data) "
                                         "VALUES (?1, ?2, ?3, ?4, ?5) "
                                         "ON CONFLICT (key, folded) DO UPDATE SET type = ?4, data = ?5");
    return write.bind(key, name, sought, type, data).step();
}

Statement keysBelow(Connection& connection, std::int64_t parent)
{
    Statement keys = connection.prepare("SELECT id, name FROM registry_key WHERE parent = ? ORDER BY folded");
    keys.bind(parent);
    return keys;
}

Statement valuesOf(Connection& connection, std::int64_t key)
{
    Statement values = connection.prepare("SELECT name, type, data FROM registry_value WHERE key = ? ORDER BY folded");
    values.bind(key);
    return values;
}

Step removeValue(Connection& connection, std::int64_t key, std::u16string_view name)
{
    const std::u16string sought = folded(name);
    return connection.prepare("DELETE FROM registry_value WHERE key = ? AND folded = ?").bind(key, sought).step();
}

// The foreign keys of the tables make the database delete all keys and values below the key.
Step removeKey(Connection& connection, std::int64_t parent, std::u16string_view name)
{
    const std::u16string sought = folded(name);
    return connection.prepare("DELETE FROM registry_key WHERE parent = ? AND folded = ?").bind(parent, sought).step();
}

Step removeEverything(Connection& connection)
{
    const Step values = connection.execute("DELETE FROM registry_value");
    return values == Step::Done ? connection.execute("DELETE FROM registry_key WHERE parent IS NOT NULL") : values;
}

}  // namespace platform::registry
