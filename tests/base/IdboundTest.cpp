// Input id ceilings: the one-dimensional bound and the bound of one axis of a two-dimensional table.
#include "idbound.h"

#include <gtest/gtest.h>

TEST(Idbound, CeilingsAndTheirEdges) {
    EXPECT_EQ(input_id_ceiling(), 4194304);
    EXPECT_EQ(input_cell_ceiling(), 134217728);
    const struct {
        long long id, limit;
        bool ok;
    } cases[] = {{0, 1, true},
                 {-1, 10, false},
                 {9, 10, true},
                 {10, 10, false},
                 {4194303, 4194304, true},
                 {4194304, 4194304, false},
                 {2147483647, 4194304, false}};
    for (const auto& c : cases)
        EXPECT_EQ(input_id_ok(c.id, c.limit), c.ok) << c.id << " " << c.limit;
    EXPECT_TRUE(input_id_ok(4194303));
    EXPECT_FALSE(input_id_ok(4194304));
    EXPECT_FALSE(input_id_ok(-5));
    // 2^27 cells: a narrow other axis leaves the one-dimensional ceiling in force, a wide one divides.
    const struct {
        long long width, limit;
    } widths[] = {{0, 4194304}, {1, 4194304}, {32, 4194304}, {33, 4067203}, {626, 214405}, {20000, 6710}};
    for (const auto& w : widths)
        EXPECT_EQ(input_id_limit(w.width), w.limit) << w.width;
}
