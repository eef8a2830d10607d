// ds_bitvec and ds_bitvec_iter against a std::vector<bool> model, plus the deliberate quirks.
#include "ds/BitVec.h"
#include "ds/BitVecIter.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

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

int count(const Model& m) {
    int n = 0;
    for (bool b : m)
        n += b;
    return n;
}

void expect_matches(const ds_bitvec& v, const Model& m, const std::string& what) {
    ASSERT_EQ(v.size(), static_cast<int>(m.size())) << what;
    ASSERT_TRUE(v.verify()) << what;
    ASSERT_EQ(model_of(v), m) << what;
    if (v.cached_on_bits() >= 0) {
        ASSERT_EQ(v.cached_on_bits(), count(m)) << what;
    }
    ASSERT_EQ(v.on_bits(), count(m)) << what;
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
// three bytes counted truly, the top byte masked with the complement of b's first byte.
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

} // namespace

TEST(BitVec, RandomOperationsAgainstModel) {
    const std::uint32_t seed = test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    const int widths[] = {0, 1, 7, 31, 32, 33, 63, 64, 65, 100, 257};
    for (int width : widths) {
        Model m;
        ds_bitvec v = random_vec(rng, width, m);
        for (int step = 0; step < 1500; ++step) {
            Model om;
            ds_bitvec o = random_vec(rng, width, om);
            const int op = rng() % 24;
            const int i = width ? static_cast<int>(rng() % width) : 0;
            const std::string what = "width " + std::to_string(width) + " step " + std::to_string(step) +
                                     " op " + std::to_string(op);
            switch (op) {
            case 0:
                if (width) {
                    v.set_ind(i);
                    m[i] = true;
                }
                break;
            case 1:
                if (width) {
                    v.clr_ind(i);
                    m[i] = false;
                }
                break;
            case 2:
                if (width) {
                    m[i] = !m[i];
                    ASSERT_EQ(v.flip_ind(i), m[i]) << what;
                }
                break;
            case 3:
                if (width) {
                    ASSERT_EQ(v.get_ind(i), m[i]) << what;
                }
                break;
            case 4: {
                const bool val = rng() % 2;
                v.set(val);
                m.assign(width, val);
                ASSERT_EQ(v.cached_on_bits(), val ? width : 0) << what;
                break;
            }
            case 5:
                v.noteq();
                m.flip();
                break;
            case 6:
                v.andeq(o);
                for (int k = 0; k < width; ++k)
                    m[k] = m[k] && om[k];
                break;
            case 7:
                v.oreq(o);
                for (int k = 0; k < width; ++k)
                    m[k] = m[k] || om[k];
                break;
            case 8:
                v.xoreq(o);
                for (int k = 0; k < width; ++k)
                    m[k] = m[k] != om[k];
                break;
            case 9:
                v.minus(o);
                for (int k = 0; k < width; ++k)
                    m[k] = m[k] && !om[k];
                break;
            case 10:
                v.sub(o);
                for (int k = 0; k < width; ++k)
                    m[k] = !m[k] && om[k];
                break;
            case 11:
                v.nand(o);
                for (int k = 0; k < width; ++k)
                    m[k] = !(m[k] && om[k]);
                break;
            case 12:
                v.nor(o);
                for (int k = 0; k < width; ++k)
                    m[k] = !(m[k] || om[k]);
                break;
            case 13:
                v.nxor(o);
                for (int k = 0; k < width; ++k)
                    m[k] = m[k] == om[k];
                break;
            case 14:
                v.nminus(o);
                for (int k = 0; k < width; ++k)
                    m[k] = !m[k] || om[k];
                break;
            case 15:
                v.nsub(o);
                for (int k = 0; k < width; ++k)
                    m[k] = m[k] || !om[k];
                break;
            case 16:
                v.copy(o);
                m = om;
                break;
            case 17:
                v.ncopy(o);
                m = om;
                m.flip();
                break;
            case 18: {
                int expect = 0;
                for (int k = 0; k < width; ++k)
                    expect += m[k] && om[k];
                ASSERT_EQ(v.on_bits_and(o), expect) << what;
                ASSERT_EQ(o.on_bits_and(v), expect) << what;
                ds_bitvec::byte_list bytes;
                for (int b = 0; b < (width + 7) / 8; ++b)
                    if (o.byte(b))
                        bytes.emplace_back(b, o.byte(b));
                ASSERT_EQ(v.on_bits_and_pointers(bytes), expect) << what;
                break;
            }
            case 19:
                ASSERT_EQ(v.on_bits_minus(o), minus_quirk_count(m, om)) << what;
                break;
            case 20: {
                bool sub_set = true, super_set = true;
                for (int k = 0; k < width; ++k) {
                    sub_set = sub_set && (!m[k] || om[k]);
                    super_set = super_set && (m[k] || !om[k]);
                }
                ASSERT_EQ(v <= o, sub_set) << what;
                ASSERT_EQ(v >= o, super_set) << what;
                ASSERT_EQ(v == o, m == om) << what;
                break;
            }
            case 21: {
                // restrict: a stretch of a wider source at any offset.
                Model sm;
                const int off = static_cast<int>(rng() % 70);
                ds_bitvec src = random_vec(rng, width + off + static_cast<int>(rng() % 40), sm);
                v.restrict(src, off);
                for (int k = 0; k < width; ++k)
                    m[k] = sm[off + k];
                break;
            }
            case 22: {
                // embed: a shorter source placed at an offset, cut at the end.
                Model sm;
                const int sw = static_cast<int>(rng() % (width + 1));
                const int off = static_cast<int>(rng() % (width + 1));
                ds_bitvec src = random_vec(rng, sw, sm);
                v.embed(off, src);
                m.assign(width, false);
                for (int k = 0; k < sw && off + k < width; ++k)
                    m[k + off] = sm[k];
                ASSERT_EQ(v.cached_on_bits(), src.cached_on_bits()) << what;
                // The cached count is the source's: only check the words here.
                ASSERT_EQ(model_of(v), m) << what;
                ds_bitvec fresh(width);
                fresh.oreq(v);
                v.copy(fresh);
                break;
            }
            case 23: {
                // Shrink then grow back: dropped bits come back clear.
                const int nw = static_cast<int>(rng() % (width + 1));
                v.set_size(nw);
                m.resize(nw);
                expect_matches(v, m, what + " shrink");
                v.set_size(width);
                m.resize(width, false);
                break;
            }
            }
            expect_matches(v, m, what);
            ASSERT_EQ(v.hash(), [&] {
                std::uint32_t h = 0;
                for (int w = 0; w < v.word_count(); ++w)
                    for (int t = 0; t < 32; ++t)
                        if (32 * w + t < width && m[32 * w + t])
                            h += std::uint32_t(1) << t;
                return h;
            }()) << what;
        }
    }
}

TEST(BitVec, IteratorAgainstModel) {
    const std::uint32_t seed = test_seed(777);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    for (int rep = 0; rep < 400; ++rep) {
        const int width = static_cast<int>(rng() % 150);
        Model m;
        ds_bitvec v = random_vec(rng, width, m);
        std::vector<int> bits;
        for (int i = 0; i < width; ++i)
            if (m[i])
                bits.push_back(i);

        std::vector<int> fwd;
        for (ds_bitvec_iter it(v); it; ++it)
            fwd.push_back(it);
        ASSERT_EQ(fwd, bits) << "width " << width;

        std::vector<int> back;
        ds_bitvec_iter it(v);
        for (int b = it.last(); it; b = --it)
            back.push_back(b);
        ASSERT_EQ(back, std::vector<int>(bits.rbegin(), bits.rend())) << "width " << width;

        for (int start = 0; start <= width + 2; ++start) {
            ds_bitvec_iter f(v, start);
            int expect = -1;
            for (int b : bits)
                if (b >= start) {
                    expect = b;
                    break;
                }
            ASSERT_EQ(static_cast<int>(f), expect) << "width " << width << " start " << start;
            ASSERT_EQ(static_cast<bool>(f), expect >= 0);
        }
    }
}

TEST(BitVec, SetIndexMinusOneLandsOnBit31OfWordZero) {
    ds_bitvec v(100);
    v.set_ind(-1);
    EXPECT_EQ(v.word(0), 0x80000000u);
    EXPECT_EQ(v.cached_on_bits(), 1);
    EXPECT_TRUE(v.get_ind(31));
    v.set_ind(31); // the same bit: count unchanged
    EXPECT_EQ(v.on_bits(), 1);
    // On a narrow vector the bit lies past the width, yet the iterator and count see it.
    ds_bitvec narrow(5);
    narrow.set_ind(2);
    narrow.set_ind(-1);
    EXPECT_EQ(narrow.on_bits(), 2);
    std::vector<int> seen;
    for (ds_bitvec_iter it(narrow); it; ++it)
        seen.push_back(it);
    EXPECT_EQ(seen, (std::vector<int>{2, 31}));
}

TEST(BitVec, OnBitsMinusMiscountsTheTopByte) {
    ds_bitvec a(32), b(32);
    // a has only its top byte; b only its first byte: the word passes the true test, but the top
    // byte is masked with NOT 0xFF and counts nothing.
    for (int i = 24; i < 32; ++i)
        a.set_ind(i);
    for (int i = 0; i < 8; ++i)
        b.set_ind(i);
    EXPECT_EQ(a.on_bits_minus(b), 0);
    ds_bitvec c(a);
    EXPECT_EQ(c.minus(b).on_bits(), 8);
    // a = bits 0 and 24, b = bit 24: true count 1, routine says 2.
    ds_bitvec x(40), y(40);
    x.set_ind(0);
    x.set_ind(24);
    y.set_ind(24);
    EXPECT_EQ(x.on_bits_minus(y), 2);
    // A word with nothing of a AND NOT b is skipped whole.
    EXPECT_EQ(y.on_bits_minus(x), 0);
}

TEST(BitVec, EmbedKeepsSourceCountAndConstructors) {
    ds_bitvec src(10);
    src.set(true);
    ds_bitvec placed(40, 35, src);
    EXPECT_EQ(placed.cached_on_bits(), 10); // the source's count, though 5 bits were cut
    int real = 0;
    for (int i = 0; i < 40; ++i)
        real += placed.get_ind(i);
    EXPECT_EQ(real, 5);

    ds_bitvec wide(100);
    for (int i : {3, 40, 41, 70, 99})
        wide.set_ind(i);
    ds_bitvec part(wide, 38, 40); // bits 38..77 of wide
    std::ostringstream os;
    os << part;
    EXPECT_EQ(os.str(), "2 3 32 ");
    EXPECT_EQ(part.cached_on_bits(), -1);
    std::ostringstream empty;
    empty << ds_bitvec(12);
    EXPECT_EQ(empty.str(), "empty ");
}

TEST(BitVec, CountCacheRules) {
    ds_bitvec v(64);
    v.set(true);
    EXPECT_EQ(v.cached_on_bits(), 64);
    v.noteq();
    EXPECT_EQ(v.cached_on_bits(), 0);
    v.set_ind(5);
    v.noteq();
    EXPECT_EQ(v.cached_on_bits(), 63);
    v.noteq();
    EXPECT_EQ(v.cached_on_bits(), 1);
    v.set_size(10); // shrinking makes the count unknown
    EXPECT_EQ(v.cached_on_bits(), -1);
    EXPECT_EQ(v.on_bits(), 1);
    v.set_size(300); // growing keeps it
    EXPECT_EQ(v.cached_on_bits(), 1);
    ds_bitvec w(300);
    w.oreq(v);
    EXPECT_EQ(w.cached_on_bits(), -1);

    // ncopy: masked with this vector's width, count from the old width, then the other's width.
    ds_bitvec big(40), small(8);
    small.set_ind(1);
    big.ncopy(small);
    EXPECT_EQ(big.size(), 8);
    EXPECT_EQ(big.cached_on_bits(), 39);
    EXPECT_EQ(big.word(0), 0xFFu & ~2u);

    ds_bitvec zero(0);
    zero.set(true);
    EXPECT_EQ(zero.on_bits(), 0);
    EXPECT_FALSE(static_cast<bool>(ds_bitvec_iter(zero)));

    // Equality reads the left side's words only.
    ds_bitvec a(32), b(64);
    a.set_ind(3);
    b.set_ind(3);
    b.set_ind(40);
    EXPECT_TRUE(a == b); // the wider right side's extra word is never read

    ds_bitvec_hash h;
    ds_bitvec_ptr_equal eq;
    ds_bitvec p(50), q(50);
    p.set_ind(49);
    q.set_ind(49);
    EXPECT_EQ(h(p), h(&q));
    EXPECT_TRUE(eq(&p, &q));
}

TEST(BitVecDeath, FatalTexts) {
    ds_bitvec v(32);
    EXPECT_DEATH(v.get_ind(40), R"(ds/BitVec\([0-9]+\): Bit index 40 out of bounds \[0\.\.32\))");
    EXPECT_DEATH(v.get_ind(-1), R"(ds/BitVec\([0-9]+\): Bit index -1 out of bounds \[0\.\.32\))");
    ds_bitvec_iter it(v);
    EXPECT_DEATH(++it, R"(ds/BitVecIter\([0-9]+\): Invalid iterator value at \+\+ operator)");
    EXPECT_DEATH(--it, R"(ds/BitVecIter\([0-9]+\): Invalid iterator value at -- operator)");
}
