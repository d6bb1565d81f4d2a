#include "ce/thread.h"

#include <gtest/gtest.h>

#include <future>

namespace {

struct Errand {
    std::promise<void> begin;
    std::promise<DWORD> done;
};

DWORD runErrand(void* parameter)
{
    auto* errand = static_cast<Errand*>(parameter);
    errand->begin.get_future().wait();
    SetLastError(ERROR_DISK_FULL);
    errand->done.set_value(GetLastError());
    return 0;
}

TEST(ThreadTest, ThreadRunsOnWhenItsHandleIsClosed)
{
    Errand errand;
    DWORD id = 0;
    const HANDLE thread = CreateThread(nullptr, 0, runErrand, &errand, 0, &id);
    ASSERT_NE(thread, nullptr);
    EXPECT_NE(id, 0U);
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_FALSE(CloseHandle(thread));
    SetLastError(ERROR_FILE_NOT_FOUND);
    errand.begin.set_value();
    EXPECT_EQ(errand.done.get_future().get(), ERROR_DISK_FULL);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);  // the last error is each thread's own
}

TEST(ThreadTest, TwoThreadsHaveHandlesAndIdsOfTheirOwn)
{
    Errand errands[2];
    DWORD ids[2] = {};
    const HANDLE first = CreateThread(nullptr, 0, runErrand, &errands[0], 0, &ids[0]);
    const HANDLE second = CreateThread(nullptr, 0, runErrand, &errands[1], 0, &ids[1]);
    EXPECT_NE(first, second);
    EXPECT_NE(ids[0], ids[1]);
    for (Errand& errand : errands) {
        errand.begin.set_value();
        errand.done.get_future().wait();
    }
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
}

TEST(ThreadTest, WhatCannotBeStartedIsRefused)
{
    Errand errand;
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, &errand, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CreateThread(nullptr, 0, runErrand, &errand, 4, nullptr), nullptr);  // suspended: nobody resumes it
}

}  // namespace
