// handle_table.h - finds the object of a handle: a file, a search, a thread, a database.
//
// A handle is a key of slot_table.h, so a closed handle is refused even if another object has its slot. Any thread may
// use the table. While a call uses an object, the object isn't destroyed, even if its handle is closed.
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

    // Whether CloseHandle closes the object. False, for example, for a search, which only FindClose closes.
    [[nodiscard]] virtual bool takesCloseHandle() const { return true; }

    // Performs the part of closing that can fail, and returns the error. CloseHandle calls this function after it has
    // removed the handle, and reports the error. So the handle is closed even after an error.
    [[nodiscard]] virtual DWORD close() { return 0; }
};

// Returns a new handle, which is neither null nor INVALID_HANDLE_VALUE.
[[nodiscard]] HANDLE addHandle(std::shared_ptr<Object> object);

// Null for a handle that is not open.
std::shared_ptr<Object> findObject(HANDLE handle);

// Returns the object of the handle if its class is `Kind`, otherwise null. For a final class, a comparison of types
// replaces the slower dynamic cast.
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

// Calls chosen() with the object of each handle. If the result is true, removes the handle and closes the object.
// `chosen` must not use the table.
void removeHandlesIf(const std::function<bool(const Object&)>& chosen);

}  // namespace platform::kernel
