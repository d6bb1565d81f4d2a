#include "kernel/handle_table.h"

#include "kernel/mutex.h"
#include "kernel/slot_table.h"

#include "ce/error.h"
#include "ce/handle.h"

#include <vector>

namespace platform::kernel {

namespace {

struct Table {
    Mutex mutex;  // guards the slots; no object is closed or destroyed under this lock
    SlotTable<std::shared_ptr<Object>> slots;
};

Table& table()
{
    static Table only;
    return only;
}

UINT_PTR keyOf(HANDLE handle)
{
    return reinterpret_cast<UINT_PTR>(handle);
}

}  // namespace

HANDLE addHandle(std::shared_ptr<Object> object)
{
    Table& handles = table();
    const MutexLock lock(handles.mutex);
    return reinterpret_cast<HANDLE>(handles.slots.keyOf(handles.slots.add(std::move(object))));
}

std::shared_ptr<Object> findObject(HANDLE handle)
{
    Table& handles = table();
    const MutexLock lock(handles.mutex);
    return handles.slots[handles.slots.find(keyOf(handle))];  // slot 0 holds null
}

std::shared_ptr<Object> removeHandle(HANDLE handle)
{
    Table& handles = table();
    const MutexLock lock(handles.mutex);
    const auto number = handles.slots.find(keyOf(handle));
    return number != 0 ? handles.slots.remove(number) : nullptr;
}

void removeHandlesIf(const std::function<bool(const Object&)>& chosen)
{
    std::vector<std::shared_ptr<Object>> removed;
    {
        Table& handles = table();
        const MutexLock lock(handles.mutex);
        for (SlotTable<std::shared_ptr<Object>>::Number number = 1; number < handles.slots.end(); ++number) {
            if (handles.slots.isFilled(number) && chosen(*handles.slots[number]))
                removed.push_back(handles.slots.remove(number));
        }
    }
    for (const auto& object : removed)
        (void)object->close();  // no caller can receive the error
}

}  // namespace platform::kernel

BOOL CloseHandle(HANDLE handle)
{
    using namespace platform::kernel;
    std::shared_ptr<Object> object = findObject(handle);
    // If two threads close the same handle, removeHandle returns the object to only one of them.
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
