// Variable kinds and the universe: the kind table, the long object table with aliases, the short gene table,
// anonymous ids and the value space the universe points to.
#include "ModelTestUtil.h"
#include "ModelVarFact.h"

#include <memory>

namespace {

// Reads a short table into u and returns what the reader printed.
std::string read_short(VarUniverse& u, const char* text) {
    std::istringstream in(text);
    return quiet([&] { u.read_short_tabs(in); });
}

} // namespace

TEST(VarUniverse, ShortTableIdsInAnyOrderWithHolesAndBadTokens) {
    VarUniverse u;
    EXPECT_EQ(read_short(u, "5 YAL001C TFC3\n0  YAL002W\tVPS8\n5 YAL003W EFB1\n"),
              "max id is 5\nfinish reading all objects\n");
    ASSERT_EQ(u.size(), 6);
    for (int i = 1; i <= 4; ++i)
        EXPECT_EQ(u.m_vars[i], nullptr);
    ASSERT_NE(u.m_vars[0], nullptr);
    EXPECT_EQ(u.m_vars[0]->m_name, "YAL002W");
    EXPECT_STREQ(u.get_var_type_name(0), "gene");
    // A repeated id replaces the variable; both first names keep pointing at it.
    EXPECT_EQ(u.m_vars[5]->m_name, "YAL003W");
    EXPECT_EQ(u.m_short_names[5], "EFB1");
    EXPECT_EQ(VarUniverse::find(u.m_name_to_id, "YAL001C"), 5);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "TFC3"), 5);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "VPS8"), 0);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "YAL002W"), -1);

    VarUniverse same;
    read_short(same, "3 GENE GENE\n");
    EXPECT_EQ(VarUniverse::find(same.m_name_to_id, "GENE"), 3);
    EXPECT_EQ(VarUniverse::find(same.m_short_to_id, "GENE"), 3);

    // A bad token ends the read quietly.
    VarUniverse bad, e;
    EXPECT_EQ(read_short(bad, "0 A a\n1 B b\nx C c\n2 D d\n"), "max id is 1\nfinish reading all objects\n");
    EXPECT_EQ(bad.size(), 2);
    EXPECT_EQ(VarUniverse::find(bad.m_name_to_id, "D"), -1);
    EXPECT_EQ(read_short(e, ""), "max id is -1\nfinish reading all objects\n");
    EXPECT_EQ(e.size(), 0);
}

TEST(ModelVarFact, KindTable) {
    const Factory1<ModelVarBase, int>& gen = model_var_gen();
    std::istringstream names("protein mrna complex event stimu gene tf InternalMetabolite ExternalMetabolite "
                             "activeProtein notActiveProtein mRNA");
    const int cards[] = {2, 2, 2, 2, 2, 3, 3, 2, 2, 2, 2, 2};
    ASSERT_EQ(gen.m_total, 12);
    std::string name;
    for (int i = 0; names >> name; ++i) {
        EXPECT_EQ(gen.name(i), name);
        EXPECT_FALSE(gen.obsolete(i));
        std::unique_ptr<ModelVarBase> var(gen.make(name.c_str(), 40 + i));
        EXPECT_EQ(var->m_id, 40 + i);
        EXPECT_EQ(var->get_state_card(), cards[i]) << name;
    }
    EXPECT_DEATH(gen.make("enzyme", 0), R"(factory\([0-9]+\): Didn't Find entry for enzyme)");
}

TEST(VarUniverseLong, KindsAndAliases) {
    VarUniverse u;
    // Row 2: " junk" before the first tab is dropped, then aliases A1, an empty one and A2 (DOS line end).
    std::istringstream in("0\tYAL001C\ttf\t1.5\tx\tTFC3\tFUN24\n"
                          "2\tYAL003W\tmrna\t0\t0\tEFB1\tTEF5 junk\tA1\t\tA2\r\n"
                          "1 YAL002W ExternalMetabolite 0 0 VPS8 FUN15\n"),
        unused;
    EXPECT_EQ(quiet([&] { u.read_tabs(in, unused); }), "max id is 2\nfinish reading all objects\n");
    ASSERT_EQ(u.size(), 3);
    const char* kinds[] = {"tf", "ExternalMetabolite", "mrna", "", "", "", "", ""};
    for (int i = 0; i < 8; ++i)
        EXPECT_STREQ(u.get_var_type_name(i), kinds[i]) << i;
    EXPECT_EQ(u.m_short_names, (std::vector<std::string>{"TFC3", "VPS8", "EFB1"}));
    const std::map<std::string, int> aliases{{"FUN24", 0}, {"TEF5", 2}, {"A1", 2},
                                             {"", 2},      {"A2", 2},   {"FUN15", 1}};
    EXPECT_EQ(u.m_alias_to_id, aliases);
    EXPECT_EQ(VarUniverse::find(u.m_short_to_id, "EFB1"), 2);
    EXPECT_EQ(VarUniverse::find(u.m_name_to_id, "YAL002W"), 1);
}

TEST(VarUniverseLong, BadRowsUnknownKindsAndAnonymousIds) {
    VarUniverse u;
    std::istringstream in("0 A gene 0 0 a x\n1 B gene 0 0 b\n"), unused;
    // The second row ends before its alias: the read stops there.
    EXPECT_EQ(quiet([&] { u.read_tabs(in, unused); }), "max id is 0\nfinish reading all objects\n");
    EXPECT_EQ(u.size(), 1);

    std::istringstream odd("0 A enzyme 0 0 a x\n");
    EXPECT_DEATH(u.read_tabs(odd, unused), R"(factory\([0-9]+\): Didn't Find entry for enzyme)");
    EXPECT_DEATH(VarUniverse::check_var_id(3, 4), R"(VarUniverse\([0-9]+\): vars id 3 differs from 4)");

    VarUniverse anon;
    anon.init_idspace(3);
    ASSERT_EQ(anon.size(), 3);
    EXPECT_EQ(anon.m_short_to_id, (std::map<std::string, int>{{"Gene0", 0}, {"Gene1", 1}, {"Gene2", 2}}));
    EXPECT_EQ(anon.m_vars[2]->m_id, 2);
    EXPECT_STREQ(anon.get_var_type_name(2), "gene");
}

// Ids that can't name a slot are fatal in both tables, with the id and the row: negative ones, the
// one whose `id + 1` overflows, and ones past the ceiling that would size tables of gigabytes. A
// number too long for an int is a bad token and ends the read quietly.
TEST(VarUniverseDeathTest, IdsOutsideTheCeiling) {
    const struct {
        const char* row;
        const char* id;
    } cases[] = {{"2147483647 A a", "2147483647"},
                 {"2147483646 A a", "2147483646"},
                 {"100000000 A a", "100000000"},
                 {"4194304 A a", "4194304"},
                 {"-1 A a", "-1"},
                 {"-22 A a", "-22"}};
    for (const auto& c : cases) {
        const std::string text = std::string("0 G g\n") + c.row + "\n";
        const std::string want = std::string(R"(VarUniverse\([0-9]+\): Bad var id )") + c.id + " in row 2\n";
        VarUniverse u;
        std::istringstream short_in(text);
        EXPECT_DEATH(u.read_short_tabs(short_in), want) << c.row;
        std::istringstream in("0 G gene 0 0 g x\n" + std::string(c.row) + " kind 0 0 s al\n"), unused;
        EXPECT_DEATH(u.read_tabs(in, unused), want) << c.row;
    }
    VarUniverse u;
    EXPECT_EQ(read_short(u, "0 G g\n4194303 H h\n99999999999 I i\n"),
              "max id is 4194303\nfinish reading all objects\n");
    EXPECT_EQ(u.size(), 4194304);
}
