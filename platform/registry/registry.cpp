// The registry's calls.
#include "ce/registry.h"

#include "database/device_database.h"
#include "kernel/troubles.h"
#include "open_key.h"
#include "registry/registry_names.h"
#include "registry_rows.h"

#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace {

using platform::database::DatabaseUse;
using platform::database::Statement;
using platform::database::Step;
using platform::database::Transaction;
using platform::kernel::Trouble;
using platform::registry::FoundKey;
using platform::registry::isText;
using platform::registry::LevelLimit;
using platform::registry::NameLimit;
using platform::registry::OpenKey;

// A key: its row and its level below the predefined key.
struct KeyPosition {
    std::int64_t row = 0;
    int level = 0;
};

LONG error(DWORD number)
{
    return static_cast<LONG>(number);
}

// Returns the platform's error for the result of a step. Any result other than Done is a failure, and is noted as a
// trouble of the registry.
LONG errorOf(Step step, Trouble kind)
{
    if (step == Step::Done)
        return ERROR_SUCCESS;
    const DWORD number = step == Step::Full       ? ERROR_DISK_FULL
                         : step == Step::NoMemory ? ERROR_NOT_ENOUGH_MEMORY
                                                  : ERROR_GEN_FAILURE;
    platform::kernel::noteTrouble(kind, platform::kernel::Troubled::Registry, {}, number);
    return error(number);
}

std::optional<std::int64_t> predefinedRow(HKEY key)
{
    if (key == HKEY_CLASSES_ROOT)
        return platform::registry::ClassesRootRow;
    if (key == HKEY_CURRENT_USER)
        return platform::registry::CurrentUserRow;
    if (key == HKEY_LOCAL_MACHINE)
        return platform::registry::LocalMachineRow;
    if (key == HKEY_USERS)
        return platform::registry::UsersRow;
    return std::nullopt;
}

std::optional<KeyPosition> positionOf(HKEY key)
{
    if (const auto row = predefinedRow(key))
        return KeyPosition{*row, 0};
    if (const auto open = platform::kernel::findHandle<OpenKey>(key))
        return KeyPosition{open->row(), open->level()};
    return std::nullopt;
}

// Splits the path `subKey` into the names of its levels. `level` is the level of the key at which the path begins.
// Returns nothing if a name isn't valid or the path leads too deep.
std::optional<std::vector<std::u16string_view>> levelsOf(std::u16string_view subKey, int level)
{
    std::vector<std::u16string_view> names;
    for (;;) {
        const std::size_t end = subKey.find(u'\\');
        const std::u16string_view name = subKey.substr(0, end);
        if (name.empty() || name.size() > NameLimit || !isText(name) || ++level > LevelLimit)
            return std::nullopt;
        names.push_back(name);
        if (end == std::u16string_view::npos)
            return names;
        subKey.remove_prefix(end + 1);
    }
}

// A value without a name is the key's default value.
std::u16string_view valueName(const WCHAR* name)
{
    return name == nullptr ? std::u16string_view() : std::u16string_view(name);
}

}  // namespace

LONG RegCreateKeyExW(HKEY key, const WCHAR* subKey, DWORD reserved, const WCHAR* /*className*/, DWORD options,
                     DWORD /*access*/, const void* security, HKEY* result, DWORD* disposition)
{
    const auto parent = positionOf(key);
    if (!parent)
        return error(ERROR_INVALID_HANDLE);
    if (subKey == nullptr || reserved != 0 || options != 0 || security != nullptr || result == nullptr)
        return error(ERROR_INVALID_PARAMETER);
    const auto names = levelsOf(subKey, parent->level);
    if (!names)
        return error(ERROR_INVALID_PARAMETER);

    const DatabaseUse database;
    if (!database)
        return error(ERROR_GEN_FAILURE);
    Transaction transaction(*database);
    if (transaction.begun() != Step::Done)
        return errorOf(transaction.begun(), Trouble::Writing);
    FoundKey found{parent->row, false};
    for (const std::u16string_view name : *names) {
        const Step step = platform::registry::openOrMakeKey(*database, found.row, name, found);
        if (step != Step::Done)
            return errorOf(step, Trouble::Writing);
    }
    const Step committed = transaction.commit();
    if (committed != Step::Done)
        return errorOf(committed, Trouble::Writing);

    const int level = parent->level + static_cast<int>(names->size());
    *result = static_cast<HKEY>(platform::kernel::addHandle(std::make_shared<OpenKey>(found.row, level)));
    if (disposition != nullptr)
        *disposition = found.made ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

LONG RegQueryValueExW(HKEY key, const WCHAR* name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* bytes)
{
    const auto position = positionOf(key);
    if (!position)
        return error(ERROR_INVALID_HANDLE);
    if (reserved != nullptr || (data != nullptr && bytes == nullptr))
        return error(ERROR_INVALID_PARAMETER);

    const DatabaseUse database;
    if (!database)
        return error(ERROR_GEN_FAILURE);
    Statement value = platform::registry::valueOf(*database, position->row, valueName(name));
    const Step step = value.step();
    if (step != Step::Row)
        return step == Step::Done ? error(ERROR_FILE_NOT_FOUND) : errorOf(step, Trouble::Reading);

    const auto stored = value.bytes(1);
    const DWORD capacity = bytes == nullptr ? 0 : *bytes;
    if (bytes != nullptr)
        *bytes = static_cast<DWORD>(stored.size());
    if (type != nullptr)
        *type = static_cast<DWORD>(value.integer(0));
    if (data == nullptr)
        return ERROR_SUCCESS;
    if (stored.size() > capacity)
        return error(ERROR_MORE_DATA);
    if (!stored.empty())
        std::memcpy(data, stored.data(), stored.size());
    return ERROR_SUCCESS;
}

LONG RegSetValueExW(HKEY key, const WCHAR* name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes)
{
    const auto position = positionOf(key);
    if (!position)
        return error(ERROR_INVALID_HANDLE);
    const std::u16string_view valued = valueName(name);
    if (reserved != 0 || valued.size() > NameLimit || !isText(valued) || (data == nullptr && bytes > 0) ||
        bytes > platform::registry::ValueBytesLimit)
        return error(ERROR_INVALID_PARAMETER);

    const DatabaseUse database;
    if (!database)
        return error(ERROR_GEN_FAILURE);
    const auto content = std::as_bytes(std::span(data, bytes));
    Transaction transaction(*database);
    Step step = transaction.begun();
    if (step == Step::Done)
        step = platform::registry::writeValue(*database, position->row, valued, type, content);
    return errorOf(step == Step::Done ? transaction.commit() : step, Trouble::Writing);
}

LONG RegCloseKey(HKEY key)
{
    if (predefinedRow(key))
        return ERROR_SUCCESS;
    if (!platform::kernel::findHandle<OpenKey>(key) || !platform::kernel::removeHandle(key))
        return error(ERROR_INVALID_HANDLE);
    return ERROR_SUCCESS;
}
