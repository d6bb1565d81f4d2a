// handle_table.h - finds the object of a handle: a file, a search, a thread, a database.
//
// A handle is a key of slot_table.h, so a closed handle stays refused. Any thread may use the table. An object
// lives until the last call on it returns.
#pragma once

#include "ce/types.h"

#include <functional>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace platform::kernel {

// Base of all objects that have handles.
class Object {
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    // Whether CloseHandle closes it. Only FindClose closes a search.
    [[nodiscard]] virtual bool takesCloseHandle() const { return true; }

    // Called by CloseHandle after the handle was removed, for work that can fail. CloseHandle reports the error; the
    // handle is closed all the same.
    [[nodiscard]] virtual DWORD close() { return 0; }
};

// A new handle, never null nor INVALID_HANDLE_VALUE.
[[nodiscard]] HANDLE addHandle(std::shared_ptr<Object> object);

// Null for a handle that is not open.
std::shared_ptr<Object> findObject(HANDLE handle);

// The object, if it has that class; otherwise null. Fastest for a final class, where a comparison of types replaces the
// dynamic cast.
template <class Kind>
std::shared_ptr<Kind> findHandle(HANDLE handle)
{
    std::shared_ptr<Object> object = findObject(handle);
    if constexpr (std::is_final_v<Kind>) {
        const Object* const plain = object.get();
        if (plain == nullptr || typeid(*plain) != typeid(Kind))
            return nullptr;
        return std::static_pointer_cast<Kind>(std::move(object));
    } else {
        return std::dynamic_pointer_cast<Kind>(std::move(object));
    }
}

// Removes a handle and returns its object; null if the handle is not open.
std::shared_ptr<Object> removeHandle(HANDLE handle);

// Removes every handle whose object `chosen` accepts, and closes the objects. `chosen` must not use the table.
void removeHandlesIf(const std::function<bool(const Object&)>& chosen);

}  // namespace platform::kernel
