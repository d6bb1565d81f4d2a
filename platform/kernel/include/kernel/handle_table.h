// handle_table.h - what handles stand for: files, searches, threads, databases.
//
// A handle is a number: a slot and how often that slot has been used. A closed handle is refused even when
// its slot serves again. Any thread may use the table; an object lives until the last call on it is over.
#pragma once

#include "ce/types.h"

#include <functional>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace platform::kernel {

// Base of everything that a handle can stand for.
class Object {
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    // Does CloseHandle take it? A search goes back with FindClose alone.
    [[nodiscard]] virtual bool takesCloseHandle() const { return true; }

    // Called by CloseHandle when the handle is out of the table, for what may fail at the end. An error
    // that isn't 0 is what CloseHandle reports; the handle is gone all the same.
    [[nodiscard]] virtual DWORD close() { return 0; }
};

// A new handle, never null nor INVALID_HANDLE_VALUE.
[[nodiscard]] HANDLE addHandle(std::shared_ptr<Object> object);

// Null for a handle that is not open.
[[nodiscard]] std::shared_ptr<Object> findObject(HANDLE handle);

// The object, if it is of that kind; otherwise null. Cheapest for a final class: comparing types costs
// two loads, a dynamic cast a walk through the class's bases.
template <class Kind>
[[nodiscard]] std::shared_ptr<Kind> findHandle(HANDLE handle)
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

// Takes a handle out of the table and gives its object; null if it is not open.
std::shared_ptr<Object> removeHandle(HANDLE handle);

// Takes out every handle whose object `chosen` accepts, and closes the objects. `chosen` may not use the
// table.
void removeHandlesIf(const std::function<bool(const Object&)>& chosen);

}  // namespace platform::kernel
