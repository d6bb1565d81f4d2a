// The library, its entry points, and the heap.
#include "ce/module.h"

#include "kernel/entry_points.h"

#include "ce/error.h"
#include "ce/memory.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

void someEntryPoint() {}

TEST(ModuleTest, OnlyTheOneLibraryIsFoundAndStaysLoaded)
{
    EXPECT_EQ(LoadLibraryW(u"\\WINDOWS\\OTHER.DLL"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(GetProcAddressW(nullptr, u"Late"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    const HMODULE library = LoadLibraryW(u"\\Windows\\coredll.dll");
    ASSERT_NE(library, nullptr);
    platform::kernel::registerEntryPoint(u"Late", &someEntryPoint);
    const FARPROC found = GetProcAddressW(library, u"Late");
    EXPECT_EQ(found, &someEntryPoint);
    EXPECT_EQ(GetProcAddressW(library, u"late"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetProcAddressW(library, u"Late"), found);
}

TEST(MemoryTest, BlockIsClearedOnRequestAndAnEmptyBlockIsNotNull)
{
    auto* const block = static_cast<BYTE*>(LocalAlloc(LPTR, 4096));
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(std::all_of(block, block + 4096, [](BYTE byte) { return byte == 0; }));
    const HLOCAL empty = LocalAlloc(LMEM_FIXED, 0);
    EXPECT_NE(empty, nullptr);
    EXPECT_EQ(LocalFree(block), nullptr);
    EXPECT_EQ(LocalFree(empty), nullptr);
    EXPECT_EQ(LocalFree(nullptr), nullptr);
}

}  // namespace
