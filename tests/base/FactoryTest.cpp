// Factory tables: lookup counts, parent shadowing and offsets, duplicates, make, the missing-name fatal.
#include "factory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

struct Shape {
    virtual ~Shape() {}
    virtual std::string kind() const = 0;
    int m_arg = 0;
    float m_arg2 = 0.0f;
};
const char* const kKinds[] = {"circle", "square", "old square"};
template <int N> struct Kind : Shape {
    explicit Kind(int a, float b = 0.0f) {
        m_arg = a;
        m_arg2 = b;
    }
    std::string kind() const override { return kKinds[N]; }
};
typedef Kind<0> Circle;
typedef Kind<1> Square;
typedef Kind<2> OldSquare;

typedef Factory1<Shape, int> ShapeFactory;

const char* const base_names[] = {"circle", "square", nullptr};
const ShapeFactory::maker_type base_funcs[] = {Factory1Make<Shape, Circle, int>::func,
                                               Factory1Make<Shape, Square, int>::func};
const ShapeFactory base_factory(base_names, base_funcs, 2, nullptr);

// Extends the base table: "square" is redefined, so the parent's square is shadowed.
const char* const ext_names[] = {"oval", "square", "old", nullptr};
const ShapeFactory::maker_type ext_funcs[] = {Factory1Make<Shape, Circle, int>::func,
                                              Factory1Make<Shape, OldSquare, int>::func,
                                              Factory1Make<Shape, OldSquare, int>::func};
const ShapeFactory ext_factory(ext_names, ext_funcs, 3, &base_factory);

} // namespace

TEST(Factory, LookupCountRules) {
    const char* const names[] = {"a", "b", "c", nullptr};
    EXPECT_EQ(lookup("c", names, -1, true), 2);
    EXPECT_EQ(lookup("zz", names, -1, false), -1);
    // A positive count scans only that many entries; a miss answers the count.
    EXPECT_EQ(lookup("b", names, 2, false), 1);
    EXPECT_EQ(lookup("c", names, 2, false), 2);
    EXPECT_EQ(lookup("a", names, 0, false), 0);
    EXPECT_EQ(lookup("a", names, -4, false), -4);
    // The first of equal names wins.
    const char* const dup[] = {"x", "y", "x", nullptr};
    EXPECT_EQ(lookup("x", dup, -1, true), 0);
}

TEST(Factory, ParentOffsetsShadowingAndMake) {
    const ShapeFactory& f = ext_factory;
    EXPECT_EQ(f.m_count, 3);
    EXPECT_EQ(f.m_total, 5);
    // Own "square" shadows the parent's; the parent's "circle" (its index 0) is shifted by 3.
    EXPECT_EQ(
        (std::vector<int>{f.product("oval", true), f.product("square", true), f.product("circle", true)}),
        (std::vector<int>{0, 1, 3}));
    EXPECT_EQ((std::vector<std::string>{f.name(2), f.name(3), f.name(4)}),
              (std::vector<std::string>{"old", "circle", "square"}));
    // A miss in the parent with required false: -1 plus the own count, not a valid index.
    EXPECT_EQ(f.product("hexagon", false), 2);
    EXPECT_EQ(base_factory.product("hexagon", false), -1);
    // Index 4 names "square", but product gives 1 for it: the parent's row is the old one.
    EXPECT_EQ((std::vector<bool>{f.obsolete(1), f.obsolete(3), f.obsolete(4)}),
              (std::vector<bool>{false, false, true}));
    // make walks to the table that owns the name.
    std::unique_ptr<Shape> a(f.make("circle", 5)), b(f.make("square", 6)), c(base_factory.make("square", 7));
    EXPECT_EQ(a->kind(), "circle");
    EXPECT_EQ(a->m_arg, 5);
    EXPECT_EQ(b->kind(), "old square");
    EXPECT_EQ(c->kind(), "square");
    EXPECT_EQ(c->m_arg, 7);
}

TEST(Factory, DuplicateNameRowIsObsoleteAndTwoArgumentMake) {
    const char* const names[] = {"one", "two", "one", nullptr};
    const ShapeFactory::maker_type funcs[] = {Factory1Make<Shape, Circle, int>::func,
                                              Factory1Make<Shape, Square, int>::func,
                                              Factory1Make<Shape, Square, int>::func};
    ShapeFactory f(names, funcs, 3, nullptr);
    EXPECT_EQ(f.product("one", true), 0);
    EXPECT_FALSE(f.obsolete(0));
    EXPECT_FALSE(f.obsolete(1));
    EXPECT_TRUE(f.obsolete(2));
    EXPECT_EQ(std::unique_ptr<Shape>(f.make("one", 1))->kind(), "circle");

    typedef Factory2<Shape, int, float> F2;
    const F2::maker_type funcs2[] = {Factory2Make<Shape, Circle, int, float>::func,
                                     Factory2Make<Shape, Square, int, float>::func};
    F2 f2(names, funcs2, 2, nullptr);
    std::unique_ptr<Shape> s(f2.make("two", 3, 0.5f));
    EXPECT_EQ(s->kind(), "square");
    EXPECT_EQ(s->m_arg, 3);
    EXPECT_EQ(s->m_arg2, 0.5f);
}

TEST(FactoryDeathTest, MissingNameIsFatal) {
    EXPECT_DEATH(ext_factory.make("hexagon", 1), R"(factory\([0-9]+\): Didn't Find entry for hexagon)");
    const char* const names[] = {"a", nullptr};
    EXPECT_DEATH(lookup("b", names, -1, true), R"(factory\([0-9]+\): Didn't Find entry for b)");
}
