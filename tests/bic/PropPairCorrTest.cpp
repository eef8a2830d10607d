// Pearson correlation of property pairs over their shared variables, against values from numpy.
#include "PropPairCorr.h"

#include "PropFixture.h"

#include <cmath>

TEST(PropPairCorr, SharedVariablesOnlyAgainstNumpy) {
    // Seven variables in two groups (a variable's second node repeats it with another value, which
    // must not count). Property 0 on variables 0-4 and 6, property 1 on 0-5, property 2 constant,
    // property 3 on variable 6 only.
    VarUniverse u(nullptr);
    u.init_idspace(7);
    Quiet q;
    PropVarGraphLayers g(u, bic_options(""), "Default");
    g.allocate_max_prop_group(1, 4);
    for (int p = 0; p < 4; ++p)
        g.add_prop_node_to_group(0, p);
    g.update_max_vid();
    g.allocate_max_var_group(2);
    for (int grp = 0; grp < 2; ++grp)
        for (int v = 0; v < 7; ++v)
            g.add_var_node_to_group(grp, v);
    const float x[5] = {1.0f, 2.0f, 3.5f, 4.0f, 7.0f}, y[5] = {2.0f, 1.5f, 5.0f, 9.0f, 8.5f};
    auto node = [&](int grp, int v) { return g.m_var_group_nodes(grp, v); };
    for (int v = 0; v < 5; ++v) {
        g.add_edge(0, node(0, v), 1.0f, x[v]);
        g.add_edge(1, node(0, v), 1.0f, y[v]);
        g.add_edge(2, node(0, v), 1.0f, 3.0f);
        g.add_edge(1, node(1, v), 1.0f, 100.0f * v);
    }
    g.add_edge(0, node(0, 6), 1.0f, -50.0f);
    g.add_edge(1, node(0, 5), 1.0f, 50.0f);
    g.add_edge(3, node(0, 6), 1.0f, 1.0f);
    PropPairCorr c(g);
    // numpy.corrcoef([1, 2, 3.5, 4, 7], [2, 1.5, 5, 9, 8.5])[0, 1]
    EXPECT_NEAR(c.get_corr(0, 1), 0.839132722789488, 1e-7);
    EXPECT_NEAR(c.get_corr(1, 0), 0.839132722789488, 1e-7);
    EXPECT_EQ(c.common_count(0, 1), 5);
    EXPECT_NEAR(c.get_corr(0, 0), 1.0, 1e-12);
    EXPECT_EQ(c.get_corr(0, 2), 0.0); // no variation
    EXPECT_EQ(c.get_corr(0, 3), 0.0); // one shared variable
    EXPECT_EQ(c.get_corr(1, 3), 0.0); // none
}
