// Option-file grammar, layering, getter asymmetries and fatal texts.
#include "options.h"

#include <gtest/gtest.h>

#include <sstream>

#include <sys/resource.h>

namespace {

options parse(const std::string& text) {
    options o;
    std::istringstream in(text);
    o.read(in, false);
    return o;
}

// Caps the address space of a death-test child, so that an allocation sized by a declared count
// fails at once; sanitizer builds need their large shadow mappings and keep the default.
void cap_memory() {
#ifndef __SANITIZE_ADDRESS__
    const rlimit cap{1UL << 30, 1UL << 30};
    setrlimit(RLIMIT_AS, &cap);
#endif
}

} // namespace

TEST(Options, ScopesValuesAndBlanks) {
    options o = parse("top = 7\n"
                      "# a comment = 3\n"
                      "[A] trailing text\n"
                      "x  =  a b  \n"
                      "empty =\n"
                      "hash = v#1\n"
                      "[B\n"
                      "y=12abc\n"
                      "[]\n"
                      "z = 1.5\n");
    EXPECT_EQ(o.get_int("", "top", true), 7);
    EXPECT_EQ(o.get_str("A", "x", true), "a b");
    EXPECT_EQ(o.get_str("A", "empty", true), "");
    EXPECT_EQ(o.get_int("A", "empty", true), 0);
    EXPECT_EQ(o.get_str("A", "hash", true), "v#1");
    EXPECT_EQ(o.get_int("B", "y", true), 12);
    EXPECT_EQ(o.get_int("", "z", true), 1);
    EXPECT_FLOAT_EQ(o.get_float("", "z", true), 1.5f);
    EXPECT_FALSE(o.has_option("", "a comment"));
    EXPECT_EQ(o.m_opt_values.size(), 6u);
    // A carriage return stays in values; "[T]\r" is a scope line: the scope stops at "]".
    options cr = parse("[T]\r\npath = data.tab\r\nn = 42\r\n");
    EXPECT_EQ(cr.get_str("T", "path", true), "data.tab\r");
    EXPECT_EQ(cr.get_int("T", "n", true), 42);
}

TEST(Options, Arrays) {
    options o = parse("[S]\n"
                      "Points = { f 4\n"
                      "-1.5 0.5\n"
                      "2 3.25\n"
                      "}\n"
                      "Ids = { i 3 ignored\n"
                      "1\n2 3\n"
                      "} tail\n"
                      "Names = { s 2\n"
                      "  lead and trail  \n"
                      "}brace\n"
                      "}\n"
                      "None = { i 0\n"
                      "}\n"
                      "Points = 9\n");
    std::vector<float>* f = o.get_floats("S", "Points", true);
    std::vector<int>* i = o.get_ints("S", "Ids", true);
    std::vector<std::string>* s = o.get_strs("S", "Names", true);
    ASSERT_TRUE(f && i && s);
    EXPECT_EQ(*f, (std::vector<float>{-1.5f, 0.5f, 2.0f, 3.25f}));
    EXPECT_EQ(*i, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(*s, (std::vector<std::string>{"  lead and trail  ", "}brace"}));
    EXPECT_EQ(o.get_ints("S", "None", true)->size(), 0u);
    // A scalar and an array of the same key are separate.
    EXPECT_EQ(o.get_int("S", "Points", true), 9);
    EXPECT_EQ(o.get_ints("S", "Points", false), nullptr);
}

TEST(Options, LaterFileWinsScopeCarriesOverAndArraysAreReplaced) {
    options o = parse("[A]\nx = 1\ny = 5\na = { i 1\n5\n}\n");
    std::vector<int>* first = o.get_ints("A", "a", true);
    std::istringstream more("x = 2\na = { i 2\n6 7\n}\n");
    o.read(more, false);
    EXPECT_EQ(o.get_int("A", "x", true), 2);
    EXPECT_EQ(o.get_int("A", "y", true), 5);
    // A redefined array is a new vector; the old one stays valid.
    std::vector<int>* second = o.get_ints("A", "a", true);
    EXPECT_NE(first, second);
    EXPECT_EQ(*first, std::vector<int>{5});
    EXPECT_EQ(*second, (std::vector<int>{6, 7}));
}

TEST(Options, MissingKeysAndTheirAsymmetries) {
    options o = parse("[A]\nx = 1\n");
    EXPECT_EQ(o.get_int("A", "nope", false), 0);
    EXPECT_EQ(o.get_float("A", "nope", false), 0.0f);
    EXPECT_FALSE(o.has_option("A", "nope"));
    // get_str stores an empty value: a later required get succeeds and reads 0.
    EXPECT_EQ(o.get_str("A", "s", false), "");
    EXPECT_TRUE(o.has_option("A", "s"));
    EXPECT_EQ(o.get_int("A", "s", true), 0);
    // A missing array becomes a stored null: later gets, even required, return null.
    EXPECT_EQ(o.get_floats("A", "arr", false), nullptr);
    EXPECT_EQ(o.get_floats("A", "arr", true), nullptr);
    // No fallback between scopes.
    EXPECT_EQ(o.get_int("B", "x", false), 0);
}

TEST(Options, TraceTexts) {
    options o;
    std::istringstream in("[Sc]\nk = v\nar = { i 1\n4\n}\n");
    testing::internal::CaptureStderr();
    o.read(in, true);
    const std::string err = testing::internal::GetCapturedStderr();
    for (const char* line :
         {"new line is %%[Sc]%%\n", "new scope Sc\n", "new option name is k\n", "line is left with v\n",
          "not array line\n", "assigning to k option v\n", "array ar type i size 1\n", "out of array read\n"})
        EXPECT_NE(err.find(line), std::string::npos) << line << " in " << err;
}

using OptionsDeath = ::testing::Test;

TEST(OptionsDeath, FatalTexts) {
    EXPECT_DEATH(
        parse("a b = 1\n"),
        R"(bad option name \(with space\) -a b- pos is 1.options\([0-9]+\): problem parsing line a b = 1)");
    EXPECT_DEATH(parse("= 1\n"), R"(options\([0-9]+\): problem parsing line = 1)");
    EXPECT_DEATH(parse("no equals\n"), R"(options\([0-9]+\): problem parsing line no equals)");
    EXPECT_DEATH(parse("   \n"), R"(options\([0-9]+\): problem parsing line    )");
    EXPECT_DEATH(parse("[S]\nq = { x 2\n1 2\n}\n"), R"(options\([0-9]+\): Bad array type x for name q)");
    EXPECT_DEATH(parse("q = { i 2\n1 2\nnot closed\n"),
                 R"(options\([0-9]+\): After array items, line is not closed)");
    EXPECT_DEATH(parse("q = { i 0\n1\n}\n"), R"(options\([0-9]+\): After array items, line is 1)");
    // The stream ends inside the array: the closing line read is empty.
    EXPECT_DEATH(parse("q = { f 3\n1.0\n"), "options\\([0-9]+\\): After array items, line is \n$");
    options o;
    EXPECT_DEATH(o.get_int("Vesk", "MinClsSize", true),
                 R"(options\([0-9]+\): option does not exists: Vesk::MinClsSize)");
    EXPECT_DEATH(o.get_str("Tables", "varob", true), R"(option does not exists: Tables::varob)");
    EXPECT_DEATH(o.get_strs("A", "b", true), R"(option does not exists: A::b)");
}

// A declared array size far beyond the items given allocates nothing ahead: the closing test is
// the first thing to fail, for every item type and however large the count.
TEST(OptionsDeathTest, HugeDeclaredArraysFailAtTheClosingLine) {
    for (const char* text : {"q = { i 2000000000\n1 2 3\n", "q = { f 2147483647\n0.5\n}\n",
                             "q = { s 2000000000\nx\ny\n", "q = { i 99999999999\n4\n"})
        EXPECT_DEATH((cap_memory(), parse(text)), "options\\([0-9]+\\): After array items, line is \n$")
            << text;
    // Items are still read up to the declared size; the rest of the last item's line is skipped.
    options o = parse("q = { i 3\n1 2\n3 4\n}\n");
    EXPECT_EQ(*o.get_ints("", "q", true), (std::vector<int>{1, 2, 3}));
}
