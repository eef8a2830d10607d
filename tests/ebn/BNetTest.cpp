// placeholder
#include "BNet.h"
#include <gtest/gtest.h>
TEST(BNet, Builds) {
    BNet<int> n;
    EXPECT_EQ(n.get_nodes_num(), 0);
}
