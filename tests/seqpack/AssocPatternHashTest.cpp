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
    // The index again, without every `every`-th gene.
    void index_without_every(int every) {
        ds_bitvec genes = allowed;
        for (int g = 0; g < allowed.size(); g += every)
            genes.clr_ind(g);
        index.init(6, 3, 0, 0, genes, 0, -1);
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
    w.index_without_every(17);
    // A second hash without the index condition must send the same events and keep every matcher alike.
    typename B::Hash hash(B::genome(w), w.index, w.allowed, 6), plain(B::genome(w), w.index, w.allowed, 6);
    typename B::Hash* const both[] = {&hash, &plain};
    hash.m_trace = plain.m_trace = false;
    plain.m_fast = false;

    HashModel model;
    model.index = &w.index;
    model.pat.dense = B::dense;
    for (int g = 0; g < n; ++g) {
        model.seqs.push_back(seq_model(w, g, B::dense));
        model.allowed.push_back(w.allowed.get_ind(g));
    }
    model.starts.resize(n);

    GeneListener lis, plain_lis;
    lis.attach(hash);
    plain_lis.attach(plain);

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
            for (auto* h : both)
                h->match(p);
            model.match(m);
            what = "match " + text;
        } else if (op < 20) {
            for (auto* h : both)
                h->push_back(DnaSeqDegChar(static_cast<unsigned char>(c)));
            model.push(true, c);
            what = "push_back";
        } else if (op < 35) {
            for (auto* h : both)
                h->push_front(DnaSeqDegChar(static_cast<unsigned char>(c)));
            model.push(false, c);
            what = "push_front";
        } else if (op < 60) {
            const int pos = static_cast<int>(rng() % L);
            for (auto* h : both)
                h->change_char(pos, DnaSeqDegChar(static_cast<unsigned char>(c)));
            model.change_char(pos, c);
            what = "change_char " + std::to_string(pos);
        } else if (op < 68) {
            for (auto* h : both)
                h->del_back();
            model.del(true);
            what = "del_back";
        } else if (op < 76) {
            for (auto* h : both)
                h->del_front();
            model.del(false);
            what = "del_front";
        } else if (op < 84) {
            const int to = rng() % 4 == 0 ? -1 : 10 + static_cast<int>(rng() % 60);
            for (auto* h : both)
                h->change_to_range(to);
            model.window(true, to);
            what = "to " + std::to_string(to);
        } else if (op < 90) {
            const int from = static_cast<int>(rng() % 30);
            for (auto* h : both)
                h->change_from_range(from);
            model.window(false, from);
            what = "from " + std::to_string(from);
        } else if (op < 95) {
            for (auto* h : both)
                h->remember();
            saved = model;
            what = "remember";
        } else {
            for (auto* h : both)
                h->revert();
            model = saved;
            what = "revert";
        }
        SCOPED_TRACE("step " + std::to_string(step) + " " + what + " -> " + hash.get_pattern().get_str());
        ds_bitvec expect(n);
        for (int g : model.in)
            expect.set_ind(g);
        ASSERT_EQ(hash.get_genes(), expect);
        ASSERT_EQ(lis.genes, expect);
        ASSERT_EQ(plain_lis.log, lis.log);
        matched_steps += expect.on_bits() > 0;
        empty_run = expect.on_bits() > 0 ? 0 : empty_run + 1;
        if (step % 7 == 0) {
            for (int g = 0; g < n; ++g) {
                ASSERT_EQ(plain.get_matcher(g).has_positions(), hash.get_matcher(g).has_positions()) << g;
                ASSERT_EQ(plain.get_matcher(g).positions(), hash.get_matcher(g).positions()) << g;
                if (g % 3 == 0) {
                    ASSERT_EQ(hash.get_pattern().match(B::genome(w).get_promoter(g)),
                              !model.seqs[g].starts(model.pat).empty())
                        << "gene " << g;
                }
            }
        }
    }
    // The walk must have spent most of its time on patterns that match something, and the index
    // condition must have spared full matches.
    EXPECT_GT(matched_steps, 1500);
    EXPECT_LT(hash.m_full_matches, plain.m_full_matches);
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
