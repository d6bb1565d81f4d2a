#include "run_table.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using set_report::RowKey;
using set_report::RunTable;

std::string textOf(const RunTable& table)
{
    std::ostringstream out;
    table.write(out);
    std::string text = out.str();
    std::erase(text, '\n');
    return text;
}

void add(RunTable& table, std::uint64_t key, const std::string& state)
{
    table.add(
        RowKey{key, key}, [&] { return "\"" + std::to_string(key) + "\""; }, state);
}

TEST(RunTableTest, ConsecutiveSetsWithEqualStateFormOneRunAndThingsOfTheSameNameStayApart)
{
    RunTable table(1000);
    // The states of thing 1 in the sets 4 to 0. An empty one means that the set doesn't have the thing.
    const char* const states[] = {"a", "b", "b", "", "b"};
    for (unsigned set = 5; set-- > 0;) {
        table.beginSet(set);
        if (const std::string state = states[4 - set]; !state.empty())
            add(table, 1, state);
        for (unsigned twin = 0; twin < set; twin++)
            add(table, 2, "");
    }
    EXPECT_EQ(textOf(table), R"([["1",4,4,a,2,3,b,0,0,b],["2",1,4],["2",2,4],["2",3,4],["2",4,4]])");
    EXPECT_EQ(table.completeFrom(), 0U);
}

TEST(RunTableTest, BeyondTheLimitTheRunsOfTheOldestSetsAreIgnored)
{
    RunTable table(100);
    for (unsigned set = 9; set-- > 0;) {
        table.beginSet(set);
        add(table, 100 + set, "state");
    }
    EXPECT_EQ(table.completeFrom(), 6U);
    EXPECT_EQ(textOf(table), R"([["108",8,8,state],["107",7,7,state],["106",6,6,state],["105",5,5,state]])");
}

}  // namespace
