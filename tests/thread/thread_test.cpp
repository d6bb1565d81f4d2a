#include "ce/thread.h"

#include <gtest/gtest.h>

#include <future>

namespace {

struct Task {
    std::promise<void> begin;
    std::promise<DWORD> done;
};

DWORD runTask(void* parameter)
{
    auto* task = static_cast<Task*>(parameter);
    task->begin.get_future().wait();
    SetLastError(ERROR_DISK_FULL);
    task->done.set_value(GetLastError());
    return 0;
}

TEST(ThreadTest, ThreadsRunOnAfterTheirHandlesAreClosedAndHaveSeparateErrors)
{
    Task tasks[2];
    DWORD ids[2] = {};
    const HANDLE first = CreateThread(nullptr, 0, runTask, &tasks[0], 0, &ids[0]);
    const HANDLE second = CreateThread(nullptr, 0, runTask, &tasks[1], 0, &ids[1]);
    EXPECT_NE(first, second);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_NE(ids[0], 0U);
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_FALSE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
    SetLastError(ERROR_FILE_NOT_FOUND);
    for (Task& task : tasks) {
        task.begin.set_value();
        EXPECT_EQ(task.done.get_future().get(), ERROR_DISK_FULL);
    }
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

}  // namespace
