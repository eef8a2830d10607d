// VarIdSpace: the one id read per table, attributes in pairs, the default space, the fatal line.
#include "VarIdSpace.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(VarIdSpace, EveryLineLandsOnTheFirstIdAndTheDefaultSpace) {
    VarIdSpace s;
    std::istringstream in("4\tYAL001\tfirst gene\tcolor\tred\tsize\tbig\n"
                          "x\tYAL002\tsecond gene\n");
    s.read_tab(in);
    ASSERT_EQ(s.size(), 5);
    EXPECT_EQ(s.ids_num(), 1);
    EXPECT_TRUE(s.has_id(4));
    EXPECT_EQ(s.get_name(4), "YAL002") << "the later line overwrites";
    EXPECT_EQ(s.get_desc(4), "second gene");
    EXPECT_EQ(s.id_of_name("YAL001"), 4);
    EXPECT_EQ(s.id_of_name("YAL002"), 4);
    EXPECT_EQ(s.id_of_attr_value("big"), 4);
    EXPECT_EQ(s.id_of_attr_value("color"), -1) << "keys are not entered, values are";
    ASSERT_EQ(s.get_attrs(4).size(), 2u);
    EXPECT_EQ(s.get_attrs(4).front(), (std::pair<std::string, std::string>("color", "red")));
    EXPECT_EQ(s.get_name(0), "");
    // The default space names genes.
    VarIdSpace d;
    d.init_idspace(3);
    ASSERT_EQ(d.size(), 4);
    EXPECT_EQ(d.get_name(2), "Gene2");
    EXPECT_EQ(d.get_desc(0), "Gene0");
    EXPECT_EQ(d.get_name(3), "");
    EXPECT_EQ(d.ids_num(), 3);
    EXPECT_EQ(d.id_of_name("Gene1"), -1) << "the name map is not filled";
}

TEST(VarIdSpaceDeathTest, TwoFieldsAreFatal) {
    VarIdSpace s;
    std::istringstream in("1\tonly name\n");
    EXPECT_DEATH(s.read_tab(in),
                 "VarIdSpace\\([0-9]+\\): Field number 2 is too small \\(at least 3 fields are "
                 "required\\) in reading var id space table");
    // A table of only the id, without a line end, is read to its end and holds nothing.
    VarIdSpace bare;
    std::istringstream id_only("4");
    bare.read_tab(id_only);
    EXPECT_EQ(bare.ids_num(), 0);
    // The one id sizes the tables: a negative or huge one is fatal before any line is read.
    for (const char* id : {"-1", "2147483647", "4194304"}) {
        std::istringstream bad(std::string(id) + "\tname\tdesc\n");
        EXPECT_DEATH(s.read_tab(bad),
                     std::string(R"(VarIdSpace\([0-9]+\): Bad var id )") + id + " in var id space table")
            << id;
    }
}

} // namespace
