// The random star initialiser of profile HMMs.
#include "ProfileHMMInit.h"

#include "Random.h"
#include "error.h"

#include <iostream>

static constexpr char kSrc[] = "ProfileHMMInit";

ProfileHMMInitRandStar::ProfileHMMInitRandStar(const SymbSubstMat& mat, int gap, int max_iter,
                                               float match_factor, bool logit)
    : m_seqs(nullptr), m_profile(nullptr), m_star(mat, gap), m_iter(0), m_max_iter(max_iter),
      m_match_factor(match_factor), m_logit(logit), m_centre(-1) {}

void ProfileHMMInitRandStar::attach_profiler(ProfilerStoreBase* store) {
    m_seqs = &store->get_seq_family();
    m_profile = &store->get_target_profile();
    m_msa.reset(new SeqMultiAlign());
}

bool ProfileHMMInitRandStar::carry_on() {
    ++m_iter;
    return m_iter < m_max_iter;
}

int ProfileHMMInitRandStar::calc_new_length() {
    const int cols = m_msa->num_cols();
    m_match_col.assign(cols, false);
    int len = 0;
    for (int c = 0; c < cols; ++c) {
        if (m_msa->slot(0, c) < 0)
            continue;
        int res = 0, gaps = 0;
        for (int r = 0; r < m_msa->num_rows(); ++r)
            (m_msa->slot(r, c) < 0 ? gaps : res) += 1;
        if (static_cast<float>(gaps) * m_match_factor < static_cast<float>(res)) {
            m_match_col[c] = true;
            ++len;
        }
    }
    return len;
}

namespace {

// Per-position counters of the star initialiser, indexed M 0, I 1, D 2.
struct StarCounts {
    float total[3];
    float count[3][3];
    std::vector<float> emit[2];

    explicit StarCounts(int alphabet) { reset(alphabet); }
    void reset(int alphabet) {
        for (int a = 0; a < 3; ++a) {
            total[a] = 3.0f;
            for (int b = 0; b < 3; ++b)
                count[a][b] = 1.0f;
        }
        emit[0].assign(alphabet, 1.0f);
        emit[1].assign(alphabet, 1.0f);
    }
};

const ProfileHMM::StateType kType[3] = {ProfileHMM::M, ProfileHMM::I, ProfileHMM::D};

// Sets the transitions out of table position `pos` and the emissions of M at pos+1 and I at pos.
void close_position(ProfileHMM& prof, StarCounts& sc, int pos, bool at_end) {
    if (at_end)
        for (float& t : sc.total)
            t -= 1.0f;
    for (int a = 0; a < 3; ++a) {
        if (kType[a] == ProfileHMM::D && pos == 0)
            continue;
        for (int b = 0; b < 3; ++b) {
            if (at_end && kType[b] == ProfileHMM::D)
                continue;
            const int to_pos = kType[b] == ProfileHMM::I ? pos : pos + 1;
            prof.set_transition_p(pos, kType[a], to_pos, kType[b], sc.count[a][b] / sc.total[a]);
        }
    }
    for (int e = 0; e < 2; ++e) {
        if (e == 0 && at_end)
            continue;
        float sum = 0.0f;
        for (float v : sc.emit[e])
            sum += v;
        for (int s = 0; s < static_cast<int>(sc.emit[e].size()); ++s)
            prof.set_emission(e == 0 ? pos + 1 : pos, e == 0 ? ProfileHMM::M : ProfileHMM::I, s,
                              sc.emit[e][s] / sum);
    }
    sc.reset(prof.m_alphabet_size);
}

} // namespace

void ProfileHMMInitRandStar::reinit() {
    if (m_seqs == nullptr || m_seqs->empty())
        VESK_FATAL(kSrc, "Star initialiser without sequences");
    const int n = static_cast<int>(m_seqs->size());
    const double u = Random::bits() / 4294967295.0;
    m_centre = static_cast<int>(u * n);
    if (m_centre >= n)
        m_centre = n - 1;
    if (m_logit)
        std::cerr << "RandStar centre " << m_centre << "\n";
    m_msa->reset();
    m_star.align(*m_seqs, m_centre, *m_msa);
    const int len = calc_new_length();
    ProfileHMM& prof = *m_profile;
    prof.update_length(len);

    const int rows = m_msa->num_rows();
    StarCounts sc(prof.m_alphabet_size);
    // Type of each row's last counted state: 0 M, 1 I, 2 D.
    std::vector<int> prev(rows, 0);
    int pos = 0;
    for (int c = 0; c < m_msa->num_cols(); ++c) {
        const bool match = m_match_col[c];
        for (int r = 0; r < rows; ++r) {
            const int slot = m_msa->slot(r, c);
            int type;
            if (match)
                type = slot >= 0 ? 0 : 2;
            else if (slot >= 0)
                type = 1;
            else
                continue;
            if (slot >= 0) {
                const int x = (*m_seqs)[m_msa->seq_id(r)].code_at(slot);
                if (x >= prof.m_alphabet_size)
                    VESK_FATAL(kSrc,
                               "Symbol " << x << " outside the alphabet of size " << prof.m_alphabet_size);
                sc.emit[type == 0 ? 0 : 1][x] += 1.0f;
            }
            sc.count[prev[r]][type] += 1.0f;
            sc.total[prev[r]] += 1.0f;
            prev[r] = type;
        }
        if (match)
            close_position(prof, sc, pos++, false);
    }
    close_position(prof, sc, pos, true);
}
