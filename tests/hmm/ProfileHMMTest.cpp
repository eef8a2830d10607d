// ProfileHMM topology against a construction from (type, position) labels; KProfileHMM copies with
// start rescaling; the alignment read off Viterbi paths; the fatal texts; globins4.hmm decoded.
#include "ProfileHMM.h"
#include "HMMDecode.h"
#include "HMMTestUtil.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <set>
#include <sstream>

namespace {

typedef ProfileHMM P;

// Expected id of a labelled state: Start 0, I0 1, then M, I, D of each table position t >= 1.
int label_id(int type, int t, int L) {
    if (type == P::Start)
        return 0;
    if (type == P::Fin)
        return 3 * L + 2;
    if (type == P::I && t == 0)
        return 1;
    return 3 * t + (type == P::M ? -1 : type == P::I ? 0 : 1);
}

// The profile's edges written from the labels: each of M/Start, I, D at t goes to M and D at t+1
// (Fin in place of M after the last column, no D there) and to I at t.
std::set<std::pair<int, int>> label_edges(int L) {
    std::set<std::pair<int, int>> e;
    for (int t = 0; t <= L; ++t) {
        const int next = t < L ? label_id(P::M, t + 1, L) : label_id(P::Fin, 0, L);
        for (int src : {t == 0 ? int(P::Start) : int(P::M), int(P::I), int(P::D)}) {
            if (src == P::D && t == 0)
                continue;
            const int s = label_id(src, t, L);
            e.insert({s, next});
            e.insert({s, label_id(P::I, t, L)});
            if (t < L)
                e.insert({s, label_id(P::D, t + 1, L)});
        }
    }
    return e;
}

// Sets every out-edge of the profile to 1/out-degree and all emissions uniform.
void make_uniform(ProfileHMM& h) {
    for (int k = 0; k < h.num_states(); ++k) {
        for (const HMMAdjacency& a : std::list<HMMAdjacency>(h.m_adj[k]))
            h.set_edge_p(k, a.to, 1.0f / h.m_adj[k].size());
        if (!h.m_states[k].m_silent)
            for (int b = 0; b < h.m_alphabet_size; ++b)
                h.set_state_emission(k, b, 1.0f / h.m_alphabet_size);
    }
}

TEST(ProfileHMM, TopologyEqualsLabelConstructionAndGrows) {
    QuietCerr quiet;
    for (int L = 1; L <= 10; ++L) {
        SCOPED_TRACE(L);
        ProfileHMM h(4, L);
        ASSERT_EQ(3 * L + 3, h.num_states());
        EXPECT_EQ(3 * L + 2, h.m_finish_state);
        std::set<std::pair<int, int>> got, back;
        int n = 0;
        for (int k = 0; k < h.num_states(); ++k) {
            for (const HMMAdjacency& a : h.m_adj[k])
                got.insert({a.from, a.to}), ++n;
            for (const HMMAdjacency& a : h.m_back_adj[k])
                back.insert({a.from, a.to});
        }
        EXPECT_EQ(label_edges(L), got);
        EXPECT_EQ(got, back);
        EXPECT_EQ(static_cast<int>(got.size()), n) << "duplicate edge";
        for (int t = 1; t <= L; ++t) {
            for (int type : {P::M, P::I, P::D}) {
                const int id = h.state_at(t, type);
                ASSERT_EQ(label_id(type, t, L), id) << "type " << type << " pos " << t;
                EXPECT_EQ(type, h.m_state_type[id]);
                EXPECT_EQ(type == P::I ? t : t - 1, h.m_state_pos[id]);
                EXPECT_EQ(type == P::D, h.m_states[id].m_silent);
            }
        }
        make_uniform(h);
        EXPECT_EQ("", verify_report(h));
    }
    // No columns, then one.
    ProfileHMM h(3, 0);
    EXPECT_EQ(1, h.num_states());
    EXPECT_EQ(0, h.m_length);
    h.update_length(1);
    EXPECT_EQ(6, h.num_states());
    EXPECT_NE(std::string::npos, quiet.text().find("PrHMM: upd lengt 1"));
}

// Start edges M 0.6, D 0.3, I 0.1; every other edge 1/out-degree; emissions marked by `tag`.
ProfileHMM tagged_profile(int L, float tag) {
    ProfileHMM h(3, L);
    make_uniform(h);
    h.set_transition_p(0, P::M, 1, P::M, 0.6f);
    h.set_transition_p(0, P::M, 1, P::D, 0.3f);
    h.set_transition_p(0, P::M, 0, P::I, 0.1f);
    for (int k = 1; k < h.m_finish_state; ++k)
        if (!h.m_states[k].m_silent)
            h.set_state_emission(k, 0, tag);
    return h;
}

// The print of a profile: every state with its edges and emissions.
std::string text(const ProfileHMM& h) {
    std::ostringstream o;
    h.print(o);
    return o.str();
}

TEST(KProfileHMM, AddGetDeleteWithStartRescaling) {
    QuietCerr quiet;
    const int L = 3;
    KProfileHMM k(3, 0, L);
    const ProfileHMM a = tagged_profile(L, 0.5f), b = tagged_profile(L, 0.25f), c = tagged_profile(L, 0.125f);
    EXPECT_EQ(0, k.add_prof_hmm(a));
    EXPECT_EQ(1, k.add_prof_hmm(b));
    EXPECT_EQ(2, k.add_prof_hmm(c));
    EXPECT_EQ(3 * (3 * L + 1) + 2, k.num_states());
    EXPECT_EQ(k.num_states() - 1, k.m_finish_state);
    // Hand values: after three adds every copy holds a third of its start edges.
    for (const HMMAdjacency& e : k.m_adj[0]) {
        const float want = (k.m_state_type[e.to] == P::M   ? 0.6f
                            : k.m_state_type[e.to] == P::D ? 0.3f
                                                           : 0.1f) /
                           3;
        EXPECT_NEAR(want, e.p, 1e-6);
    }
    ProfileHMM out(3, L);
    k.get_prof_hmm(1, out);
    EXPECT_EQ(text(b), text(out));
    k.del_prof_hmm(0);
    EXPECT_FALSE(k.copy_used(0));
    // The freed copy id comes back; old mass 2/3 and k = 3 leave every copy at a third again.
    EXPECT_EQ(0, k.add_prof_hmm(c));
    EXPECT_EQ(k.num_states() - 1, k.m_finish_state);
    float total = 0.0f;
    for (const HMMAdjacency& e : k.m_adj[0])
        total += e.p;
    EXPECT_NEAR(1.0f, total, 1e-6);
    EXPECT_NEAR(0.6f / 3, edge_p(k, 0, k.m_adj[0].front().to), 1e-6);
    for (int copy = 0; copy < 3; ++copy) {
        ProfileHMM o(3, L);
        k.get_prof_hmm(copy, o);
        EXPECT_EQ(text(copy == 1 ? b : c), text(o));
    }
    // Silent states keep rising ids inside each copy's chain, the decoders' need.
    for (int s = 0; s < k.num_states(); ++s)
        for (const HMMAdjacency& e : k.m_adj[s])
            if (k.m_states[e.to].m_silent) {
                EXPECT_LT(s, e.to);
            }
    EXPECT_TRUE(k.verify());
    // A shorter copy in place of a longer one leaves freed ids; the finish stays at the highest id.
    k.del_prof_hmm(2);
    EXPECT_EQ(2, k.add_prof_hmm(tagged_profile(1, 0.5f)));
    EXPECT_EQ(k.num_states() - 1, k.m_finish_state);
}

TEST(ProfileHMMMultiAlign, InsertBlocksPackedLeft) {
    QuietCerr quiet;
    // Two columns; code 0 strongly in M1, 1 in M2, 2 only from inserts.
    ProfileHMM h(3, 2);
    make_uniform(h);
    for (int t : {1, 2})
        for (int b = 0; b < 3; ++b)
            h.set_emission(t, P::M, b, b == t - 1 ? 0.98f : 0.01f);
    for (int t : {0, 1, 2})
        for (int b = 0; b < 3; ++b)
            h.set_emission(t, P::I, b, b == 2 ? 0.98f : 0.01f);
    SymbolSequenceSet seqs;
    for (const char* s : {"01", "0221", "012"})
        seqs.push_back(digits(s));
    std::vector<bool> use{true, true, true};
    SeqMultiAlign msa;
    ProfileHMMMultiAlign(h).align(seqs, use, msa);
    ASSERT_EQ(3, msa.num_rows());
    const char* want[] = {"0--1-", "0221-", "0--12"};
    for (int r = 0; r < 3; ++r)
        EXPECT_EQ(want[r], msa_row(msa, seqs, r));
}

TEST(ProfileHMMDeath, FatalTexts) {
    ProfileHMM h(3, 2);
    EXPECT_DEATH(h.set_transition_p(0, P::M, 1, P::M, 1.5f),
                 R"(ProfileHMM\([0-9]+\): Trying to set prob = 1.5 >1 at 0 s 2 to 1 s 2)");
    EXPECT_DEATH(h.set_transition_p(0, P::M, 2, P::M, 0.5f),
                 R"(ProfileHMM\([0-9]+\): Try set profile HMM adj from pos 0 type 2 to pos 2 type 2)");
    EXPECT_DEATH(h.set_emission(1, P::M, 0, 2.0f), R"(ProfileHMM\([0-9]+\): Tring to set emis with p 2 > 1)");
    KProfileHMM k(3, 1, 2);
    EXPECT_DEATH(k.del_prof_hmm(1), R"(ProfileHMM\([0-9]+\): Try to del unsued copy 1 from KPorfileHMM)");
}

// globins4.hmm set through set_transition_p and set_emission from the argument lines that
// tests/hmm/profile_ref.py writes (bench/hmm_fetch_profiles.sh); Viterbi and forward of the 45
// globins against its float32 model of the recursions on ids built from the labels.
TEST(ProfileHMM, Globins4DecodesEqualNumpyModel) {
    const std::string dir = source_dir() + "/bench/data/scratch/hmm/";
    std::ifstream hmm(dir + "globins4_profile.txt"), want(dir + "globins4_ref.txt");
    ProteinSequenceSet seqs;
    if (!hmm || !want || !read_scratch("globins45.fa", seqs))
        GTEST_SKIP() << "run bench/hmm_fetch_profiles.sh first";
    QuietCerr quiet;
    int L, fp, ft, tp, tt;
    std::string kind;
    float p;
    hmm >> L;
    ProfileHMM h(24, L);
    while (hmm >> kind >> fp >> ft >> tp) {
        if (kind == "T" && hmm >> tt >> p)
            h.set_transition_p(fp, P::StateType(ft), tp, P::StateType(tt), p);
        else if (hmm >> p)
            h.set_emission(fp, P::StateType(ft), tp, p);
    }
    ViterbiDecode vit(h);
    ForwardDecode fwd(h);
    int i, n = 0;
    double v, f;
    while (want >> i >> v >> f) {
        HMMPath path;
        EXPECT_NEAR(v, vit.decode(seqs[i], path), 1e-5 * std::fabs(v)) << i;
        EXPECT_NEAR(f, fwd.decode(seqs[i]), 1e-5 * std::fabs(f)) << i;
        ++n;
    }
    EXPECT_EQ(45, n);
}

} // namespace
