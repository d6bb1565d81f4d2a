// handle_table.cpp - slots for objects, and CloseHandle.
#include "kernel/handle_table.h"

#include "ce/error.h"
#include "ce/handle.h"

#include <mutex>
#include <vector>

namespace platform::kernel {

namespace {

struct Slot {
    std::shared_ptr<Object> object;
    std::uint32_t use = 0;  // raised when the slot is emptied, so that old handles don't match
};

struct Table {
    std::mutex mutex;  // guards the slots and nothing else: no object is called or destroyed under it
    std::vector<Slot> slots;
    std::vector<std::uint32_t> freeSlots;
};

// 31 bits, so that no handle is INVALID_HANDLE_VALUE.
constexpr std::uint32_t UseMask = 0x7FFFFFFF;

Table& table()
{
    static Table only;
    return only;
}

HANDLE handleOf(std::size_t slot, std::uint32_t use)
{
    // Slot 0 is handle 1: null stands for no handle.
    return reinterpret_cast<HANDLE>((UINT_PTR{use} << 32) | (slot + 1));
}

// The slot of an open handle; null otherwise. Under the table's lock.
Slot* openSlot(Table& handles, HANDLE handle)
{
    const auto number = reinterpret_cast<UINT_PTR>(handle);
    const std::size_t slot = (number & 0xFFFFFFFF) - 1;  // handle 0 wraps and fails the test below
    if (slot >= handles.slots.size())
        return nullptr;
    Slot& found = handles.slots[slot];
    return found.object && found.use == number >> 32 ? &found : nullptr;
}

std::shared_ptr<Object> empty(Table& handles, Slot& slot)
{
    handles.freeSlots.push_back(static_cast<std::uint32_t>(&slot - handles.slots.data()));
    slot.use = (slot.use + 1) & UseMask;
    return std::move(slot.object);
}

}  // namespace

HANDLE addHandle(std::shared_ptr<Object> object)
{
    Table& handles = table();
    const std::lock_guard lock(handles.mutex);
    if (handles.freeSlots.empty()) {
        handles.slots.emplace_back();
        handles.freeSlots.push_back(static_cast<std::uint32_t>(handles.slots.size() - 1));
    }
    const std::uint32_t index = handles.freeSlots.back();
    handles.freeSlots.pop_back();
    Slot& slot = handles.slots[index];
    slot.object = std::move(object);
    return handleOf(index, slot.use);
}

std::shared_ptr<Object> findObject(HANDLE handle)
{
    Table& handles = table();
    const std::lock_guard lock(handles.mutex);
    const Slot* const slot = openSlot(handles, handle);
    return slot ? slot->object : nullptr;
}

std::shared_ptr<Object> removeHandle(HANDLE handle)
{
    Table& handles = table();
    const std::lock_guard lock(handles.mutex);
    Slot* const slot = openSlot(handles, handle);
    return slot ? empty(handles, *slot) : nullptr;
}

void removeHandlesIf(const std::function<bool(const Object&)>& chosen)
{
    std::vector<std::shared_ptr<Object>> removed;
    {
        Table& handles = table();
        const std::lock_guard lock(handles.mutex);
        for (Slot& slot : handles.slots) {
            if (slot.object && chosen(*slot.object))
                removed.push_back(empty(handles, slot));
        }
    }
    for (const auto& object : removed)
        (void)object->close();  // nobody is left to hear of it
}

}  // namespace platform::kernel

BOOL CloseHandle(HANDLE handle)
{
    using namespace platform::kernel;
    std::shared_ptr<Object> object = findObject(handle);
    // Of two threads that close one handle, one gets the object.
    if (!object || !object->takesCloseHandle() || !removeHandle(handle)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    const DWORD error = object->close();
    if (error != 0) {
        SetLastError(error);
        return FALSE;
    }
    return TRUE;
}
