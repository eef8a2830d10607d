// Variable kinds of the universe: the kind table, the long object table with aliases, anonymous ids.
#include "ModelVarFact.h"
#include "ModelTestUtil.h"

#include <memory>

TEST(ModelVarFact, KindTable) {
    const Factory1<ModelVarBase, int>& gen = model_var_gen();
    const char* names[] = {"protein",
                           "mrna",
                           "complex",
                           "event",
                           "stimu",
                           "gene",
                           "tf",
                           "InternalMetabolite",
                           "ExternalMetabolite",
                           "activeProtein",
                           "notActiveProtein",
                           "mRNA"};
    const int cards[] = {2, 2, 2, 2, 2, 3, 3, 2, 2, 2, 2, 2};
    ASSERT_EQ(gen.m_total, 12);
    for (int i = 0; i < 12; ++i) {
        EXPECT_STREQ(gen.name(i), names[i]);
        EXPECT_FALSE(gen.obsolete(i));
        std::unique_ptr<ModelVarBase> var(gen.make(names[i], 40 + i));
        EXPECT_EQ(var->m_id, 40 + i);
        EXPECT_EQ(var->get_state_card(), cards[i]) << names[i];
    }
    EXPECT_DEATH(gen.make("enzyme", 0), R"(factory\([0-9]+\): Didn't Find entry for enzyme)");
}

TEST(VarUniverseLong, KindsAndAliases) {
    VarUniverse u;
    // Row 2: " junk" before the first tab is dropped, then aliases A1, an empty one and A2 (DOS line end).
    std::istringstream in("0\tYAL001C\ttf\t1.5\tx\tTFC3\tFUN24\n"
                          "2\tYAL003W\tmrna\t0\t0\tEFB1\tTEF5 junk\tA1\t\tA2\r\n"
                          "1 YAL002W ExternalMetabolite 0 0 VPS8 FUN15\n");
    std::istringstream unused;
    testing::internal::CaptureStderr();
    u.read_tabs(in, unused);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "max id is 2\nfinish reading all objects\n");
    ASSERT_EQ(u.size(), 3);
    EXPECT_STREQ(u.get_var_type_name(0), "tf");
    EXPECT_STREQ(u.get_var_type_name(1), "ExternalMetabolite");
    EXPECT_STREQ(u.get_var_type_name(2), "mrna");
    EXPECT_EQ(u.m_vars[0]->get_state_card(), 3);
    EXPECT_EQ(u.m_vars[2]->m_name, "YAL003W");
    EXPECT_EQ(u.m_short_names, (std::vector<std::string>{"TFC3", "VPS8", "EFB1"}));
    const std::map<std::string, int> aliases{{"FUN24", 0}, {"TEF5", 2}, {"A1", 2},
                                             {"", 2},      {"A2", 2},   {"FUN15", 1}};
    EXPECT_EQ(u.m_alias_to_id, aliases);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "EFB1"), 2);
    EXPECT_EQ(VarUniverse::find(u.m_name_to_id, "YAL002W"), 1);

    // The short table makes genes by name too.
    VarUniverse s;
    std::istringstream short_in("0 YAL001C TFC3\n");
    testing::internal::CaptureStderr();
    s.read_short_tabs(short_in);
    testing::internal::GetCapturedStderr();
    EXPECT_STREQ(s.get_var_type_name(0), "gene");
    EXPECT_STREQ(s.get_var_type_name(7), "");
}

TEST(VarUniverseLong, BadRowsAndUnknownKinds) {
    VarUniverse u;
    std::istringstream in("0 A gene 0 0 a x\n1 B gene 0 0 b\n"), unused;
    testing::internal::CaptureStderr();
    u.read_tabs(in, unused); // the second row ends before its alias: the read stops there
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "max id is 0\nfinish reading all objects\n");
    EXPECT_EQ(u.size(), 1);

    std::istringstream odd("0 A enzyme 0 0 a x\n");
    EXPECT_DEATH(u.read_tabs(odd, unused), R"(factory\([0-9]+\): Didn't Find entry for enzyme)");
    EXPECT_DEATH(VarUniverse::check_var_id(3, 4), R"(VarUniverse\([0-9]+\): vars id 3 differs from 4)");
}

TEST(VarUniverseLong, InitIdspace) {
    VarUniverse u;
    u.init_idspace(3);
    ASSERT_EQ(u.size(), 3);
    EXPECT_EQ(u.m_short_to_id, (std::map<std::string, int>{{"Gene0", 0}, {"Gene1", 1}, {"Gene2", 2}}));
    EXPECT_TRUE(u.m_short_names.empty());
    EXPECT_TRUE(u.m_name_to_id.empty());
    EXPECT_EQ(u.m_vars[1]->m_name, "Gene1");
    EXPECT_EQ(u.m_vars[2]->m_id, 2);
    EXPECT_STREQ(u.get_var_type_name(2), "gene");
}
