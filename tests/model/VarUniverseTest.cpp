// The short gene table and the value space the universe points to.
#include "ValSpace3.h"
#include "VarUniverse.h"
#include "options.h"

#include <gtest/gtest.h>

#include <sstream>

TEST(VarUniverse, ShortTableIdsInAnyOrderWithHoles) {
    VarUniverse u;
    std::istringstream in("5 YAL001C TFC3\n0  YAL002W\tVPS8\n5 YAL003W EFB1\n");
    testing::internal::CaptureStderr();
    u.read_short_tabs(in);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "max id is 5\nfinish reading all objects\n");
    ASSERT_EQ(u.size(), 6);
    for (int i = 1; i <= 4; ++i)
        EXPECT_EQ(u.m_vars[i], nullptr);
    ASSERT_NE(u.m_vars[0], nullptr);
    EXPECT_EQ(u.m_vars[0]->m_name, "YAL002W");
    EXPECT_EQ(u.m_vars[0]->m_id, 0);
    EXPECT_EQ(u.m_vars[0]->get_state_card(), 3);
    // A repeated id replaces the variable; both first names keep pointing at it.
    EXPECT_EQ(u.m_vars[5]->m_name, "YAL003W");
    EXPECT_EQ(u.m_short_names[5], "EFB1");
    EXPECT_EQ(VarUniverse::find(u.m_name_to_id, "YAL001C"), 5);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "TFC3"), 5);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "VPS8"), 0);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "YAL002W"), -1);
}

TEST(VarUniverse, BadTokenEndsTheReadQuietlyAndEmptyTable) {
    VarUniverse u;
    std::istringstream in("0 A a\n1 B b\nx C c\n2 D d\n");
    testing::internal::CaptureStderr();
    u.read_short_tabs(in);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "max id is 1\nfinish reading all objects\n");
    EXPECT_EQ(u.size(), 2);
    EXPECT_EQ(VarUniverse::find(u.m_name_to_id, "D"), -1);

    VarUniverse e;
    std::istringstream none("");
    testing::internal::CaptureStderr();
    e.read_short_tabs(none);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "max id is -1\nfinish reading all objects\n");
    EXPECT_EQ(e.size(), 0);
}

TEST(VarUniverse, SameNameInBothColumns) {
    VarUniverse u;
    std::istringstream in("3 GENE GENE\n");
    testing::internal::CaptureStderr();
    u.read_short_tabs(in);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(VarUniverse::find(u.m_name_to_id, "GENE"), 3);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "GENE"), 3);
}

TEST(ValSpace3, StrictThresholds) {
    options o;
    ValSpace3 vs(o, "kaka");
    EXPECT_EQ(vs.get_state_of_val(1.0f), 0);
    EXPECT_EQ(vs.get_state_of_val(-1.0f), 0);
    EXPECT_EQ(vs.get_state_of_val(1.0001f), 1);
    EXPECT_EQ(vs.get_state_of_val(-1.0001f), 2);
    EXPECT_EQ(vs.get_val_state_prob(2, -3.0f), 1.0f);
    EXPECT_EQ(vs.get_val_state_prob(0, -3.0f), 0.0f);
    EXPECT_EQ(vs.get_zero_state(), 0);
    EXPECT_EQ(vs.m_k, 3);
    EXPECT_TRUE(o.m_opt_values.empty()); // reads no option
}
