// Handles that are closed, invalid or of another kind.
#include "kernel/handle_table.h"

#include "ce/error.h"
#include "ce/handle.h"

#include <gtest/gtest.h>

using namespace platform::kernel;

namespace {

class Thing final : public Object {
public:
    explicit Thing(int& alive) : alive_(alive) { ++alive_; }
    ~Thing() override { --alive_; }
    [[nodiscard]] DWORD close() override { return closeError; }

    DWORD closeError = 0;

private:
    int& alive_;
};

class OtherThing final : public Object {
public:
    [[nodiscard]] bool takesCloseHandle() const override { return false; }
};

TEST(HandleTableTest, ClosedHandleIsRefusedAlthoughItsSlotIsUsedAgain)
{
    int alive = 0;
    const HANDLE first = addHandle(std::make_shared<Thing>(alive));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    auto used = findHandle<Thing>(first);
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_EQ(alive, 1) << "an object must live until its last use is over";
    used.reset();
    EXPECT_EQ(alive, 0);

    auto failing = std::make_shared<Thing>(alive);
    failing->closeError = ERROR_GEN_FAILURE;
    const HANDLE second = addHandle(std::move(failing));
    EXPECT_NE(first, second);
    EXPECT_EQ(findHandle<Thing>(first), nullptr);
    SetLastError(0);
    EXPECT_FALSE(CloseHandle(first));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    EXPECT_FALSE(CloseHandle(second)) << "the error of the object's close must be reported";
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    EXPECT_EQ(alive, 0);
}

TEST(HandleTableTest, InvalidHandlesAndHandlesOfAnotherKindAreRefused)
{
    const HANDLE search = addHandle(std::make_shared<OtherThing>());
    EXPECT_EQ(findHandle<Thing>(search), nullptr);
    EXPECT_NE(findHandle<Object>(search), nullptr);
    for (const HANDLE wrong :
         {HANDLE{}, INVALID_HANDLE_VALUE, reinterpret_cast<HANDLE>(UINT_PTR{0x7FFFFFFF}), search}) {
        EXPECT_FALSE(CloseHandle(wrong));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    EXPECT_NE(removeHandle(search), nullptr);
    EXPECT_EQ(removeHandle(search), nullptr);
}

}  // namespace
