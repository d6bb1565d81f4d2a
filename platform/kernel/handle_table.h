// handle_table.h - what handles stand for: files, searches, threads, databases.
//
// A handle is a number: a slot and how often that slot has been used. A closed handle is refused even when
// its slot serves again. Any thread may use the table; an object lives until the last call on it is over.
#pragma once

#include "ce/types.h"

#include <memory>

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
};

// A new handle, never null nor INVALID_HANDLE_VALUE.
[[nodiscard]] HANDLE addHandle(std::shared_ptr<Object> object);

// Null for a handle that is not open.
[[nodiscard]] std::shared_ptr<Object> findObject(HANDLE handle);

// The object, if it is of that kind; otherwise null.
template <class Kind>
[[nodiscard]] std::shared_ptr<Kind> findHandle(HANDLE handle)
{
    return std::dynamic_pointer_cast<Kind>(findObject(handle));
}

// Takes a handle out of the table and gives its object; null if it is not open.
std::shared_ptr<Object> removeHandle(HANDLE handle);

}  // namespace platform::kernel
