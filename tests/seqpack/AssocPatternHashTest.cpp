// The gene set of a pattern through thousands of random single changes, against the plain model of
// the incremental rules and a listener of the events; fresh matches against brute force; the cases
// where the incremental set and a fresh match part on purpose.
#include "AssocPatternHash.h"
#include "PatternModel.h"
#include "TestSupport.h"
#include "VarUniverse.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <sstream>
#include <utility>
#include <vector>

namespace {
// Genes with random promoters of one length (a few N), read from FASTA into both forms, and an index
// over the whole promoters.
struct PatWorld {
    VarUniverse univ;
    DnaSeqGenomePromoters<DnaSequence> letters;
    DnaSeqGenomePromoters<DnaDenseSequence> dense;
    ds_bitvec allowed;
    KMerAggragator<DnaSequence> index;

    PatWorld(int n, int len, std::uint32_t seed, const std::vector<std::string>& fixed = {})
        : allowed(n), index(univ, letters) {
        std::ostringstream tab, fa;
        for (int i = 0; i < n; ++i)
            tab << i << " G" << i << " g" << i << "\n";
        std::istringstream tin(tab.str());
        univ.read_short_tabs(tin);
        std::mt19937 rng(seed);
        for (int i = 0; i < n; ++i) {
            std::string s = i < static_cast<int>(fixed.size()) ? fixed[i] : std::string();
            while (static_cast<int>(s.size()) < len)
                s.push_back(rng() % 29 == 0 ? 'N' : "ACGT"[rng() % 4]);
            fa << ">g" << i << "\n" << s << "\n";
            if (rng() % 8 != 0 || i < static_cast<int>(fixed.size()))
                allowed.set_ind(i);
        }
        std::istringstream f1(fa.str()), f2(fa.str());
        letters.read_fasta(len, univ, f1, false, false);
        dense.read_fasta(len, univ, f2, false, false);
        index.init(6, 3, 0, 0, allowed, 0, -1);
    }
};

// Follows events 0, 1 and 3 into its own set, and empties it on 5 (a new pattern).
struct GeneListener {
    ds_bitvec genes;
    const ds_bitvec* source = nullptr;
    std::function<int()> cur;
    int events = 0;
    template <class H> void attach(H& hash) {
        genes = hash.get_genes();
        source = &hash.get_genes();
        cur = [&hash]() { return hash.get_cur_oper_gene(); };
        for (int e : {0, 1, 3, 4, 5})
            hash.get_dispatch().subscribe(e, makeFunctor((CBFunctor1<int>*)0, *this, &GeneListener::on));
    }
    std::vector<std::pair<int, int>> log; // every event with the gene it names
    void on(int e) {
        ++events;
        log.emplace_back(e, e <= 1 ? cur() : -1);
        if (e == 0)
            genes.set_ind(cur());
        else if (e == 1)
            genes.clr_ind(cur());
        else if (e == 3)
            genes = *source;
        else if (e == 5)
            genes.clear();
    }
};

struct DenseBranch {
    typedef AssocPatternHashDense Hash;
    typedef Dna8MerPattern Pat;
    static const bool dense = true;
    static const DnaSeqGenomePromoters<DnaDenseSequence>& genome(const PatWorld& w) { return w.dense; }
};

struct LetterBranch {
    typedef AssocPatternHashLetter Hash;
    typedef DnaSeqPattern Pat;
    static const bool dense = false;
    static const DnaSeqGenomePromoters<DnaSequence>& genome(const PatWorld& w) { return w.letters; }
};

// The promoter as set bits a position: packed nibbles (the whole last word), or letter bits.
SeqModel seq_model(const PatWorld& w, int g, bool dense) {
    SeqModel m;
    m.dense = dense;
    if (dense) {
        for (const DnaDegChar8Mer& word : w.dense.get_promoter(g).m_words)
            for (int i = 0; i < 8; ++i)
                m.vals.push_back(word.get_nibble(i));
        m.length = w.dense.get_promoter(g).m_length;
    } else {
        for (char c : w.letters.get_promoter(g))
            m.vals.push_back(c == 'A' ? 1 : c == 'G' ? 2 : c == 'C' ? 4 : c == 'T' ? 8 : 0);
        m.length = static_cast<int>(m.vals.size());
    }
    return m;
}

template <class B> class AssocPatternHashRandomTest : public ::testing::Test {};
typedef ::testing::Types<DenseBranch, LetterBranch> Branches;
TYPED_TEST_SUITE(AssocPatternHashRandomTest, Branches);

TYPED_TEST(AssocPatternHashRandomTest, RandomEditsFollowTheIncrementalRules) {
    typedef TypeParam B;
    const std::uint32_t seed = test_seed(4711);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    const int n = 200;
    PatWorld w(n, 64, seed);
    typename B::Hash hash(B::genome(w), w.index, w.allowed, 6);
    hash.m_trace = false;

    HashModel model;
    model.index = &w.index;
    model.pat.dense = B::dense;
    for (int g = 0; g < n; ++g) {
        model.seqs.push_back(seq_model(w, g, B::dense));
        model.allowed.push_back(w.allowed.get_ind(g));
    }
    model.starts.resize(n);

    GeneListener lis;
    lis.attach(hash);

    HashModel saved = model;
    int matched_steps = 0, empty_run = 0;
    for (int step = 0; step < 3000; ++step) {
        const int op = static_cast<int>(rng() % 100);
        const int L = model.pat.len();
        const int c = rng() % 4 == 0 ? 15 : 1 + static_cast<int>(rng() % 15);
        std::string what;
        if (step % 250 == 0 || L < 2 || L > 14 || empty_run > 4) {
            // A new pattern: a stretch of a promoter, some positions widened.
            const std::string& src = w.letters.get_promoter(static_cast<int>(rng() % n));
            const int len = 4 + static_cast<int>(rng() % 5);
            std::string text = src.substr(rng() % (src.size() - len), static_cast<std::size_t>(len));
            for (char& ch : text)
                if (ch == 'N' || rng() % 3 == 0)
                    ch = '*';
            typename B::Pat p;
            p.init_str(text);
            p.m_mismatches = static_cast<int>(rng() % 2);
            p.m_to_range = rng() % 3 == 0 ? 30 + static_cast<int>(rng() % 34) : -1;
            PatModel m;
            m.dense = B::dense;
            for (char ch : text)
                m.push_back(ch == '*' ? 15 : DnaSeqChar::from_letter(ch).m_val);
            m.leaks.clear(); // read from text: four-bit complements
            m.mm = p.m_mismatches;
            m.to = p.m_to_range;
            hash.match(p);
            model.match(m);
            what = "match " + text;
        } else if (op < 20) {
            hash.push_back(DnaSeqDegChar(static_cast<unsigned char>(c)));
            model.push(true, c);
            what = "push_back";
        } else if (op < 35) {
            hash.push_front(DnaSeqDegChar(static_cast<unsigned char>(c)));
            model.push(false, c);
            what = "push_front";
        } else if (op < 60) {
            const int pos = static_cast<int>(rng() % L);
            hash.change_char(pos, DnaSeqDegChar(static_cast<unsigned char>(c)));
            model.change_char(pos, c);
            what = "change_char " + std::to_string(pos);
        } else if (op < 68) {
            hash.del_back();
            model.del(true);
            what = "del_back";
        } else if (op < 76) {
            hash.del_front();
            model.del(false);
            what = "del_front";
        } else if (op < 84) {
            const int to = rng() % 4 == 0 ? -1 : 10 + static_cast<int>(rng() % 60);
            hash.change_to_range(to);
            model.window(true, to);
            what = "to " + std::to_string(to);
        } else if (op < 90) {
            const int from = static_cast<int>(rng() % 30);
            hash.change_from_range(from);
            model.window(false, from);
            what = "from " + std::to_string(from);
        } else if (op < 95) {
            hash.remember();
            saved = model;
            what = "remember";
        } else {
            hash.revert();
            model = saved;
            what = "revert";
        }
        SCOPED_TRACE("step " + std::to_string(step) + " " + what + " -> " + hash.get_pattern().get_str());
        ds_bitvec expect(n);
        for (int g : model.in)
            expect.set_ind(g);
        ASSERT_EQ(hash.get_genes(), expect);
        ASSERT_EQ(lis.genes, expect);
        matched_steps += expect.on_bits() > 0;
        empty_run = expect.on_bits() > 0 ? 0 : empty_run + 1;
        if (step % 7 == 0) {
            for (int g = 0; g < n; g += 3)
                ASSERT_EQ(hash.get_pattern().match(B::genome(w).get_promoter(g)),
                          !model.seqs[g].starts(model.pat).empty())
                    << "gene " << g;
        }
    }
    // The walk must have spent most of its time on patterns that match something.
    EXPECT_GT(matched_steps, 1500);
}

// The index condition before full matches changes nothing but the work: a hash with it and one
// without, through the same random edits, send the same events and leave every matcher alike.
// Patterns are promoter stretches with few wildcards, most promoters hold A, C, G, T only (others an N
// or two) and the index, of degeneracy 1, leaves out a few allowed genes, so both sides of the
// condition are met.
TYPED_TEST(AssocPatternHashRandomTest, IndexConditionKeepsEventsAndMatchers) {
    typedef TypeParam B;
    const std::uint32_t seed = test_seed(9090);
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 rng(seed);
    const int n = 150, len = 64;
    std::vector<std::string> fixed(n);
    for (std::string& s : fixed)
        for (int i = 0; i < len; ++i)
            s.push_back(rng() % 400 == 0 ? 'N' : "ACGT"[rng() % 4]);
    PatWorld w(n, len, seed, fixed);
    ds_bitvec indexed = w.allowed;
    for (int g = 0; g < n; g += 17)
        indexed.clr_ind(g);
    KMerAggragator<DnaSequence> index(w.univ, w.letters);
    quiet([&] { index.init(6, 1, 0, 0, indexed, 0, -1); });
    typename B::Hash fast(B::genome(w), index, w.allowed, 6), plain(B::genome(w), index, w.allowed, 6);
    fast.m_trace = plain.m_trace = false;
    plain.m_fast = false;
    GeneListener fast_log, plain_log;
    fast_log.attach(fast);
    plain_log.attach(plain);
    auto both = [&](const std::function<void(typename B::Hash&)>& edit) {
        edit(fast);
        edit(plain);
    };
    for (int step = 0; step < 2000; ++step) {
        const int L = fast.get_pattern().length();
        const int op = static_cast<int>(rng() % 100);
        const int c = rng() % 4 ? 1 << (rng() % 4) : 1 + static_cast<int>(rng() % 15);
        const DnaSeqDegChar dc(static_cast<unsigned char>(c));
        if (step % 100 == 0 || L < 3 || L > 14 || fast.get_genes().on_bits() == 0) {
            const std::string& src = fixed[rng() % n];
            std::string text = src.substr(rng() % (len - 10), 6 + rng() % 5);
            if (rng() % 2)
                text[rng() % text.size()] = '*';
            typename B::Pat p;
            p.init_str(text);
            p.m_mismatches = rng() % 8 == 0;
            both([&](typename B::Hash& h) { h.match(p); });
        } else if (op < 15) {
            both([&](typename B::Hash& h) { h.push_back(dc); });
        } else if (op < 25) {
            both([&](typename B::Hash& h) { h.push_front(dc); });
        } else if (op < 50) {
            const int pos = static_cast<int>(rng() % L);
            both([&](typename B::Hash& h) { h.change_char(pos, dc); });
        } else if (op < 62) {
            both([&](typename B::Hash& h) { h.del_back(); });
        } else if (op < 74) {
            both([&](typename B::Hash& h) { h.del_front(); });
        } else if (op < 84) {
            const int to = rng() % 3 == 0 ? -1 : 10 + static_cast<int>(rng() % 60);
            both([&](typename B::Hash& h) { h.change_to_range(to); });
        } else if (op < 90) {
            const int from = static_cast<int>(rng() % 30);
            both([&](typename B::Hash& h) { h.change_from_range(from); });
        } else if (op < 95) {
            both([&](typename B::Hash& h) { h.remember(); });
        } else {
            both([&](typename B::Hash& h) { h.revert(); });
        }
        SCOPED_TRACE("step " + std::to_string(step) + " -> " + fast.get_pattern().get_str());
        ASSERT_EQ(plain.get_pattern().get_str(), fast.get_pattern().get_str());
        ASSERT_EQ(plain.get_genes(), fast.get_genes());
        ASSERT_EQ(plain_log.log, fast_log.log);
        for (int g = 0; g < n; ++g) {
            ASSERT_EQ(plain.get_matcher(g).has_positions(), fast.get_matcher(g).has_positions()) << g;
            ASSERT_EQ(plain.get_matcher(g).positions(), fast.get_matcher(g).positions()) << g;
        }
    }
    // The condition spared full matches (about a tenth on this walk).
    EXPECT_LT(fast.m_full_matches, plain.m_full_matches);
}

// Four promoters built by hand, 40 letters each, and a hash matched to a pattern.
struct SmallHash : PatWorld {
    AssocPatternHashDense hash;
    explicit SmallHash(const char* text)
        : PatWorld(4, 40, 1,
                   {std::string(12, 'C') + "GACGTA" + std::string(22, 'C'),
                    std::string(20, 'C') + "GACGTT" + std::string(14, 'C'), std::string(40, 'C'),
                    std::string(30, 'C') + "GACGTA" + std::string(4, 'C')}),
          hash(dense, index, allowed, 6) {
        hash.m_trace = false;
        Dna8MerPattern p;
        p.init_str(text);
        hash.match(p);
    }
    ds_bitvec bits(std::initializer_list<int> on) const {
        ds_bitvec v(4);
        for (int i : on)
            v.set_ind(i);
        return v;
    }
};

TEST(AssocPatternHashTest, EventsOfWildcardsReduceAndRevert) {
    SmallHash h("GACGT");
    AssocPatternHashDense& hash = h.hash;
    EXPECT_EQ(hash.get_genes(), h.bits({0, 1, 3}));
    GeneListener lis;
    lis.attach(hash);
    // A wildcard changes no gene and sends nothing.
    hash.push_back(DnaSeqDegChar(15));
    EXPECT_EQ(lis.events, 0);
    EXPECT_EQ(hash.get_pattern().get_str(), "GACGT*");
    // A or T behind; then both removed at once: genes 0 and 3 (A) and 1 (T) leave, each once.
    hash.remember();
    hash.change_char(5, DnaSeqDegChar(9));
    EXPECT_EQ(hash.get_genes(), h.bits({0, 1, 3}));
    lis.events = 0;
    hash.reduce_char(5, DnaSeqDegChar(9));
    EXPECT_EQ(hash.get_genes(), h.bits({}));
    EXPECT_EQ(lis.events, 3);
    EXPECT_TRUE(hash.verify());
    // revert restores the set with one event 3 and no gene events.
    lis.events = 0;
    hash.revert();
    EXPECT_EQ(lis.events, 1);
    EXPECT_EQ(hash.get_genes(), h.bits({0, 1, 3}));
    EXPECT_EQ(lis.genes, hash.get_genes());
    EXPECT_EQ(hash.get_pattern().get_str(), "GACGT*");
}

TEST(AssocPatternHashTest, WindowShrunkAndRegrown) {
    SmallHash h("GACGT");
    AssocPatternHashDense& hash = h.hash;
    // Gene 0's site ends at 16, gene 1's at 24, gene 3's at 34.
    hash.change_to_range(25);
    EXPECT_EQ(hash.get_genes(), h.bits({0, 1}));
    hash.change_to_range(24);
    EXPECT_EQ(hash.get_genes(), h.bits({0}));
    hash.change_from_range(13);
    EXPECT_EQ(hash.get_genes(), h.bits({}));
    hash.change_from_range(0);
    hash.change_to_range(-1);
    EXPECT_EQ(hash.get_genes(), h.bits({0, 1, 3}));
    EXPECT_TRUE(hash.verify());
    // A window beyond the sequence's end is no window.
    hash.change_to_range(400);
    EXPECT_EQ(hash.get_genes(), h.bits({0, 1, 3}));
}

TEST(AssocPatternHashTest, IncrementalAndFreshMatchPartWhereTheEncodingSaysSo) {
    // A wildcard pushed in front leaves the starts where they were, so the A added next is tested
    // right before the old start (a C in genes 0 and 3): both leave, though a fresh match of "##ACGTA"
    // (both new fronts accept every base) still holds them.
    SmallHash front("ACGTA");
    EXPECT_EQ(front.hash.get_genes(), front.bits({0, 3}));
    front.hash.push_front(DnaSeqDegChar(15));
    front.hash.push_front(DnaSeqDegChar(1));
    EXPECT_EQ(front.hash.get_pattern().get_str(), "##ACGTA");
    EXPECT_EQ(front.hash.get_genes(), front.bits({}));
    EXPECT_DEATH(front.hash.verify(),
                 R"(AssocPatternHash\([0-9]+\): Incomaptible matching at gene 0 increm was 0)");
    // C, G, T pushed behind GA keep genes 0 and 3 incrementally, while a fresh match refuses the A
    // right behind the last pushed T.
    SmallHash back("GA");
    for (int b : {4, 2, 8})
        back.hash.push_back(DnaSeqDegChar(static_cast<unsigned char>(b)));
    EXPECT_EQ(back.hash.get_pattern().get_str(), "GACGT");
    EXPECT_EQ(back.hash.get_genes(), back.bits({0, 1, 3}));
    EXPECT_DEATH(back.hash.verify(),
                 R"(AssocPatternHash\([0-9]+\): Incomaptible matching at gene 0 increm was 1)");
}
} // namespace
