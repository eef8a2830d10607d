// ds_bitvec and ds_bitvec_iter against a std::vector<bool> model, plus the deliberate quirks.
#include "ds/BitVec.h"
#include "ds/BitVecIter.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <vector>

namespace {

typedef std::vector<bool> Model;

Model model_of(const ds_bitvec& v) {
    Model m(v.size());
    for (int i = 0; i < v.size(); ++i)
        m[i] = (v.word(i / 32) >> (i % 32)) & 1u;
    return m;
}

int count(const Model& m) { return static_cast<int>(std::count(m.begin(), m.end(), true)); }

std::vector<int> iterate(const ds_bitvec& v) {
    std::vector<int> seen;
    for (ds_bitvec_iter it(v); it; ++it)
        seen.push_back(it);
    return seen;
}

// Size, structure, bits, any known count, the true count, the hash (the sum of the words), and the
// iterator forward, backward and from `start` on.
void expect_matches(const ds_bitvec& v, const Model& m, const std::string& what, int start) {
    ASSERT_EQ(v.size(), static_cast<int>(m.size())) << what;
    ASSERT_TRUE(v.verify()) << what;
    ASSERT_EQ(model_of(v), m) << what;
    if (v.cached_on_bits() >= 0) {
        ASSERT_EQ(v.cached_on_bits(), count(m)) << what;
    }
    ASSERT_EQ(v.on_bits(), count(m)) << what;
    std::uint32_t h = 0;
    std::vector<int> bits, back;
    for (size_t i = 0; i < m.size(); ++i)
        if (m[i]) {
            h += std::uint32_t(1) << (i % 32);
            bits.push_back(static_cast<int>(i));
        }
    ASSERT_EQ(v.hash(), h) << what;
    ASSERT_EQ(iterate(v), bits) << what;
    ds_bitvec_iter it(v);
    for (int b = it.last(); it; b = --it)
        back.push_back(b);
    ASSERT_EQ(back, std::vector<int>(bits.rbegin(), bits.rend())) << what;
    const auto first = std::lower_bound(bits.begin(), bits.end(), start);
    const ds_bitvec_iter from(v, start);
    ASSERT_EQ(static_cast<int>(from), first == bits.end() ? -1 : *first) << what << " start " << start;
    ASSERT_EQ(static_cast<bool>(from), first != bits.end()) << what << " start " << start;
}

ds_bitvec with_bits(int width, std::initializer_list<int> bits) {
    ds_bitvec v(width);
    for (int b : bits)
        v.set_ind(b);
    return v;
}

ds_bitvec random_vec(std::mt19937& rng, int width, Model& m) {
    ds_bitvec v(width);
    m.assign(width, false);
    std::bernoulli_distribution coin(rng() % 2 ? 0.5 : 0.1);
    for (int i = 0; i < width; ++i)
        if (coin(rng)) {
            v.set_ind(i);
            m[i] = true;
        }
    return v;
}

// The count that on_bits_minus gives: per 32-bit word that has any bit of a AND NOT b, the low
// three bytes counted truly, the top byte masked with the complement of b's first byte (a with
// only its top byte against b with only its first byte counts 0, not 8).
int minus_quirk_count(const Model& a, const Model& b) {
    int n = 0;
    const int words = (static_cast<int>(a.size()) + 31) / 32;
    auto at = [](const Model& m, int i) { return i < static_cast<int>(m.size()) && m[i]; };
    for (int w = 0; w < words; ++w) {
        bool any = false;
        for (int t = 0; t < 32; ++t)
            any = any || (at(a, 32 * w + t) && !at(b, 32 * w + t));
        if (!any)
            continue;
        for (int t = 0; t < 24; ++t)
            n += at(a, 32 * w + t) && !at(b, 32 * w + t);
        for (int t = 0; t < 8; ++t)
            n += at(a, 32 * w + 24 + t) && !at(b, 32 * w + t);
    }
    return n;
}

// In-place two-operand operations and the bit rule each applies.
struct BinOp {
    ds_bitvec& (ds_bitvec::*op)(const ds_bitvec&);
    bool (*rule)(bool, bool);
};
const BinOp kBinOps[] = {
    {&ds_bitvec::andeq, [](bool a, bool b) { return a && b; }},
    {&ds_bitvec::oreq, [](bool a, bool b) { return a || b; }},
    {&ds_bitvec::xoreq, [](bool a, bool b) { return a != b; }},
    {&ds_bitvec::minus, [](bool a, bool b) { return a && !b; }},
    {&ds_bitvec::sub, [](bool a, bool b) { return !a && b; }},
    {&ds_bitvec::nand, [](bool a, bool b) { return !(a && b); }},
    {&ds_bitvec::nor, [](bool a, bool b) { return !(a || b); }},
    {&ds_bitvec::nxor, [](bool a, bool b) { return a == b; }},
    {&ds_bitvec::nminus, [](bool a, bool b) { return !a || b; }},
    {&ds_bitvec::nsub, [](bool a, bool b) { return a || !b; }},
    {&ds_bitvec::copy, [](bool, bool b) { return b; }},
    {&ds_bitvec::ncopy, [](bool, bool b) { return !b; }},
};
const int kNumBinOps = sizeof(kBinOps) / sizeof(kBinOps[0]);

} // namespace

TEST(BitVec, RandomOperationsAgainstModel) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    for (int width : {0, 1, 7, 31, 32, 33, 63, 64, 65, 100, 257}) {
        Model m;
        ds_bitvec v = random_vec(rng, width, m);
        for (int step = 0; step < 1500; ++step) {
            Model om;
            ds_bitvec o = random_vec(rng, width, om);
            const int op = rng() % (8 + kNumBinOps);
            const int i = width ? static_cast<int>(rng() % width) : 0;
            const std::string what = "width " + std::to_string(width) + " step " + std::to_string(step) +
                                     " op " + std::to_string(op);
            // The counting and comparing queries, on every step.
            int both = 0;
            bool sub_set = true, super_set = true;
            for (int k = 0; k < width; ++k) {
                both += m[k] && om[k];
                sub_set = sub_set && (!m[k] || om[k]);
                super_set = super_set && (m[k] || !om[k]);
            }
            ds_bitvec::byte_list bytes;
            for (int b = 0; b < (width + 7) / 8; ++b)
                if (o.byte(b))
                    bytes.emplace_back(b, o.byte(b));
            ASSERT_EQ(v.on_bits_and(o), both) << what;
            ASSERT_EQ(o.on_bits_and(v), both) << what;
            ASSERT_EQ(v.on_bits_and_pointers(bytes), both) << what;
            ASSERT_EQ(v.on_bits_minus(o), minus_quirk_count(m, om)) << what;
            ASSERT_EQ(v <= o, sub_set) << what;
            ASSERT_EQ(v >= o, super_set) << what;
            ASSERT_EQ(v == o, m == om) << what;
            if (width) {
                ASSERT_EQ(v.get_ind(i), m[i]) << what;
            }
            if (op >= 8) {
                const BinOp& b = kBinOps[op - 8];
                (v.*b.op)(o);
                for (int k = 0; k < width; ++k)
                    m[k] = b.rule(m[k], om[k]);
            }
            switch (op) {
            case 0:
            case 1:
                if (width)
                    op == 0 ? v.set_ind(i) : v.clr_ind(i), m[i] = op == 0;
                break;
            case 2:
                if (width) {
                    m[i] = !m[i];
                    ASSERT_EQ(v.flip_ind(i), m[i]) << what;
                }
                break;
            case 3: {
                const bool val = rng() % 2;
                v.set(val);
                m.assign(width, val);
                ASSERT_EQ(v.cached_on_bits(), val ? width : 0) << what;
                break;
            }
            case 4:
                v.noteq();
                m.flip();
                break;
            case 5: { // restrict: a stretch of a wider source at any offset
                Model sm;
                const int off = static_cast<int>(rng() % 70);
                ds_bitvec src = random_vec(rng, width + off + static_cast<int>(rng() % 40), sm);
                v.restrict(src, off);
                for (int k = 0; k < width; ++k)
                    m[k] = sm[off + k];
                break;
            }
            case 6: { // embed: a shorter source placed at an offset, cut at the end
                Model sm;
                const int sw = static_cast<int>(rng() % (width + 1));
                const int off = static_cast<int>(rng() % (width + 1));
                ds_bitvec src = random_vec(rng, sw, sm);
                v.embed(off, src);
                m.assign(width, false);
                for (int k = 0; k < sw && off + k < width; ++k)
                    m[k + off] = sm[k];
                // The cached count is the source's: only check the words here.
                ASSERT_EQ(v.cached_on_bits(), src.cached_on_bits()) << what;
                ASSERT_EQ(model_of(v), m) << what;
                ds_bitvec fresh(width);
                v.copy(fresh.oreq(v));
                break;
            }
            case 7: { // shrink then grow back: dropped bits come back clear
                const int nw = static_cast<int>(rng() % (width + 1));
                v.set_size(nw);
                m.resize(nw);
                expect_matches(v, m, what + " shrink", i);
                v.set_size(width);
                m.resize(width, false);
                break;
            }
            }
            expect_matches(v, m, what, static_cast<int>(rng() % (width + 3)));
            if (HasFatalFailure())
                return;
        }
    }
}

TEST(BitVec, SetIndexMinusOneLandsOnBit31OfWordZero) {
    ds_bitvec v(100);
    v.set_ind(-1);
    EXPECT_EQ(v.word(0), 0x80000000u);
    EXPECT_EQ(v.cached_on_bits(), 1);
    v.set_ind(31); // the same bit: count unchanged
    EXPECT_EQ(v.cached_on_bits(), 1);
    // On a narrow vector the bit lies past the width, yet the iterator and count see it.
    ds_bitvec narrow = with_bits(5, {2, -1});
    EXPECT_EQ(narrow.on_bits(), 2);
    EXPECT_EQ(iterate(narrow), (std::vector<int>{2, 31}));
}

TEST(BitVec, CountQuirksAndConstructors) {
    // embed keeps the source's count though bits were cut: 10 set, 5 fit.
    ds_bitvec src(10);
    src.set(true);
    ds_bitvec placed(40, 35, src);
    EXPECT_EQ(placed.cached_on_bits(), 10);
    EXPECT_EQ(count(model_of(placed)), 5);
    // A stretch of bits 38..77; its count is unknown.
    ds_bitvec part(with_bits(100, {3, 40, 41, 70, 99}), 38, 40);
    std::ostringstream os, empty;
    os << part;
    empty << ds_bitvec(12);
    EXPECT_EQ(os.str(), "2 3 32 ");
    EXPECT_EQ(empty.str(), "empty ");
    EXPECT_EQ(part.cached_on_bits(), -1);
    // ncopy: masked with the other's width, count = old width minus the other's count.
    ds_bitvec big(40);
    big.ncopy(with_bits(8, {1}));
    EXPECT_EQ(big.size(), 8);
    EXPECT_EQ(big.cached_on_bits(), 39);
    EXPECT_EQ(big.word(0), 0xFFu & ~2u);
    // Growing keeps a known count.
    ds_bitvec grown = with_bits(10, {1});
    grown.set_size(300);
    EXPECT_EQ(grown.cached_on_bits(), 1);
    // Equality reads the left side's words only: the wider right side's extra word is never read.
    EXPECT_TRUE(with_bits(32, {3}) == with_bits(64, {3, 40}));
    // The functors key hash containers by content.
    ds_bitvec p = with_bits(50, {49}), q = with_bits(50, {49});
    EXPECT_EQ(ds_bitvec_hash()(p), ds_bitvec_hash()(&q));
    EXPECT_TRUE(ds_bitvec_ptr_equal()(&p, &q));
}

TEST(BitVecDeath, FatalTexts) {
    ds_bitvec v(32);
    EXPECT_DEATH(v.get_ind(40), R"(ds/BitVec\([0-9]+\): Bit index 40 out of bounds \[0\.\.32\))");
    EXPECT_DEATH(v.get_ind(-1), R"(ds/BitVec\([0-9]+\): Bit index -1 out of bounds \[0\.\.32\))");
    ds_bitvec_iter it(v);
    EXPECT_DEATH(++it, R"(ds/BitVecIter\([0-9]+\): Invalid iterator value at \+\+ operator)");
    EXPECT_DEATH(--it, R"(ds/BitVecIter\([0-9]+\): Invalid iterator value at -- operator)");
}
