// split_line and count_match.
#include "strutil.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

typedef std::vector<std::string> Fields;

TEST(SplitLine, FieldsEmptyFieldsAndCarriageReturns) {
    std::istringstream in("a\tb\t\tc\r\n\nx\r\ty\n");
    Fields f{"stale"};
    split_line(in, f, '\t');
    EXPECT_EQ(f, (Fields{"a", "b", "", "c"}));
    split_line(in, f, '\t');
    EXPECT_EQ(f, (Fields{""})); // an empty line is one empty field
    split_line(in, f, '\t');
    EXPECT_EQ(f, (Fields{"x", "y"}));
    split_line(in, f, '\t');
    EXPECT_TRUE(f.empty());
}

// An unterminated last line loses its last field; a trailing separator gives an empty last field.
TEST(SplitLine, LineEnds) {
    std::istringstream in("1,2\n3,4,5"), spaced(" a b \n");
    Fields f;
    split_line(in, f, ',');
    EXPECT_EQ(f, (Fields{"1", "2"}));
    split_line(in, f, ',');
    EXPECT_EQ(f, (Fields{"3", "4"}));
    EXPECT_FALSE(in.good());
    split_line(spaced, f, ' ');
    EXPECT_EQ(f, (Fields{"", "a", "b", ""}));
}

TEST(CountMatch, OverlapsCount) {
    EXPECT_EQ(count_match("aaa", "aa"), 2);
    EXPECT_EQ(count_match("abababa", "aba"), 3);
    EXPECT_EQ(count_match("GATTACA", "A"), 3);
    EXPECT_EQ(count_match("GATTACA", "TTT"), 0);
    EXPECT_EQ(count_match("ab", "abc"), 0);
}
