// Pathway variables: the kind table with its obsolete rows, bpm_varuniv's tables and the variable slots.
#include "ModelTestUtil.h"
#include "mrna.h"
#include "varfact.h"
#include "varuniv.h"

#include <memory>

TEST(BpmVarFact, ObsoleteRowsAndSpelling) {
    const Factory2<bpm_basevar, bpm_system*, int>& gen = bpm_basevar_gen();
    ASSERT_EQ(gen.m_total, 11);
    for (int i = 0; i < 11; ++i)
        EXPECT_EQ(gen.obsolete(i), i >= 1 && i <= 4) << i;
    EXPECT_STREQ(gen.name(8), "ExtrenalMetabolite");
    EXPECT_EQ(gen.product("mRNA", true), 10);
    std::unique_ptr<bpm_basevar> g(gen.make("gene", nullptr, 3)), t(gen.make("tf", nullptr, 4)),
        m(gen.make("ExtrenalMetabolite", nullptr, 5));
    EXPECT_NE(dynamic_cast<bpm_gene*>(g.get()), nullptr);
    EXPECT_NE(dynamic_cast<bpm_tf*>(t.get()), nullptr);
    EXPECT_NE(dynamic_cast<bpm_mrna*>(m.get()), nullptr);
    EXPECT_EQ(t->get_state_card(), 3);
    EXPECT_EQ(m->get_state_card(), 2);
    EXPECT_EQ(m->m_state_card, 1);
    EXPECT_DEATH(gen.make("ExternalMetabolite", nullptr, 0),
                 R"(factory\([0-9]+\): Didn't Find entry for ExternalMetabolite)");
}

TEST(BpmVaruniv, ObjectsAndAttributes) {
    bpm_varuniv u;
    std::istringstream objects("0 NDI1 mrna 0.5 1 w rest of the line\n2 GAL4 tf 0 0 w\n1 GAL1 gene 0 0 w\n"
                               "3 X mRNA 0 0 w\n");
    // Unknown names enter the map with id 0, so the last row lands on NDI1.
    std::istringstream attrs(
        "GAL4 gene_id 17 a b\nGAL1 gene_id 5 a b\nGAL1 colour red a b\nNOPE gene_id 9 a b\n");
    quiet([&] { u.read_tabs(objects, attrs); });
    ASSERT_EQ(u.m_all_vars.size(), 4u);
    const char* kinds[] = {"mrna", "gene", "tf", "mRNA"};
    for (int i = 0; i < 4; ++i)
        EXPECT_STREQ(u.get_var_type_name(i), kinds[i]);
    EXPECT_EQ(dynamic_cast<bpm_tf&>(*u.m_all_vars[2]).m_gene_id, 17);
    EXPECT_EQ(dynamic_cast<bpm_gene&>(*u.m_all_vars[1]).m_gene_id, 5);
    EXPECT_EQ(dynamic_cast<bpm_mrna&>(*u.m_all_vars[0]).m_gene_id, 9);
    EXPECT_EQ(u.m_var_to_id.at("NOPE"), 0);
    EXPECT_EQ(u.m_all_vars[3]->m_name, "X");

    bpm_varuniv bad;
    std::istringstream odd("0 A protein 0 0 w\n"), none;
    EXPECT_DEATH(bad.read_tabs(odd, none), R"(factory\([0-9]+\): Didn't Find entry for protein)");
    EXPECT_DEATH(bpm_varuniv::check_var_id(1, 2), R"(varuniv\([0-9]+\): vars id 1 differs from 2)");
}

TEST(BpmVar, SlotsCloneAndCompare) {
    int marker = 0;
    bpm_system* sys = reinterpret_cast<bpm_system*>(&marker);
    bpm_gene gene(nullptr, 7);
    gene.set_attr("gene_id", "12", "", "");
    std::unique_ptr<bpm_basevar> copy(gene.clone(sys));
    ASSERT_NE(dynamic_cast<bpm_gene*>(copy.get()), nullptr);
    EXPECT_EQ(copy->m_system, sys);
    EXPECT_EQ(static_cast<bpm_gene&>(*copy).m_gene_id, 12);
    EXPECT_TRUE(bpm_basevar::compare(&gene, copy.get()));
    bpm_tf other(nullptr, 8);
    EXPECT_FALSE(bpm_basevar::compare(&gene, &other));

    bpm_var<bpm_prot_state> plain(nullptr, 1);
    EXPECT_EQ(quiet([&] { plain.set_attr("gene_id", "3", "", ""); }),
              "no recognized attributes for this variable\n");
    EXPECT_EQ(plain.get_state_card(), 2);
    EXPECT_DEATH(plain.get_state_dst(0),
                 R"(\.\./model/var\([0-9]+\): Should never reach this place in ganios distribution!)");
}
