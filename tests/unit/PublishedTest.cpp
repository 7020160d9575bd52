#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Published.h"

namespace velmora::support {
namespace {

TEST(Published, NotifiesEveryWriteInSubscriptionOrderAfterStoring) {
    Published<std::vector<int>> list;
    std::vector<std::string> seen;
    list.observe([&](const std::vector<int>& value) { seen.push_back("a" + std::to_string(value.size())); });
    auto second = list.observe([&](const std::vector<int>& value) {
        EXPECT_EQ(list.get(), value);  // the value is stored before observers run
        seen.push_back("b" + std::to_string(value.size()));
    });
    list.set({1});
    list.modify([](std::vector<int>& value) { value.push_back(2); });
    list.removeObserver(second);
    list.set({});
    EXPECT_EQ(seen, (std::vector<std::string>{"a1", "b1", "a2", "b2", "a0"}));
}

}  // namespace
}  // namespace velmora::support
