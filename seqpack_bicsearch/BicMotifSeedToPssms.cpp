// BicMotifSeedToPssms: seeds grown into PSSMs by enrichment of a focus gene set, masking and reports.
#include "BicMotifSeedToPssms.h"

#include "ds/BitVecIter.h"
#include "options.h"

#include <algorithm>
#include <iostream>

namespace {
char complement(char c) {
    switch (c) {
    case 'A':
        return 'T';
    case 'C':
        return 'G';
    case 'G':
        return 'C';
    case 'T':
        return 'A';
    default:
        return c;
    }
}

// Binomial logs are memoised for sets up to the universe's size and overlaps of a few dozen genes;
// larger overlaps are computed directly.
const int kBinomOverlaps = 32;
} // namespace

BicMotifSeedToPssms::BicMotifSeedToPssms(const DnaSeqGenomePromoters<DnaSequence>& genome,
                                         const ds_bitvec& allowed, options& opts, const std::string& scope)
    : m_genome(genome), m_allowed(allowed), m_prior(*opts.get_floats(scope, "PriorMultip", true)),
      m_max_pos_entropy(opts.get_float(scope, "MaxPosEntropy", true)), m_from(0), m_to(1000000), m_dir(0),
      m_focus_count(0), m_motif_from(0), m_motif_to(0), m_score(0.0f),
      m_thresh_score(opts.get_float(scope, "ThreshScore", true)), m_fp_thresh(0.0f),
      m_max_vars(opts.get_int(scope, "MaxVars", true)),
      m_max_pat_length(opts.get_int(scope, "MaxPatLength", true)),
      m_max_pad(opts.get_int(scope, "MaxPad", true)),
      m_min_bic_frac(opts.get_float(scope, "MinMotifBicFrac", true)),
      m_fp_thresh_score(opts.get_float(scope, "FpThreshScore", true)),
      m_binom(allowed.on_bits() + 2, kBinomOverlaps), m_best_hit(0), m_focus(allowed.size()),
      m_logit(opts.get_int(scope, "Logit", true) != 0), m_pssm_id(0),
      m_motfps_out(opts.get_str(scope, "out_motfps", true)),
      m_pssmk_out(opts.get_str(scope, "out_pssmk", true)),
      m_pssmd_out(opts.get_str(scope, "out_pssmd", true)),
      m_gen_pos_rpt(opts.get_int(scope, "GenPosRpt", false) != 0),
      m_gen_flank(opts.get_int(scope, "GenFlank", false) != 0), m_flank_bp(0),
      m_mot_hits(static_cast<std::size_t>(genome.id_space_size())) {
    m_prior.resize(4, 0.0f);
    if (m_gen_pos_rpt)
        m_pos_out.open(opts.get_str(scope, "pos_rpt", true));
    if (m_gen_flank) {
        m_flank_bp = opts.get_int(scope, "FlankReportBP", true);
        m_flank_dir = opts.get_str(scope, "FlankRptDir", true);
    }
    clear_masks();
}

void BicMotifSeedToPssms::clear_masks() {
    m_mask.resize(static_cast<std::size_t>(m_genome.id_space_size()));
    for (int g = 0; g < m_genome.id_space_size(); ++g)
        m_mask[g].assign(m_genome.get_promoter(g).size(), 0);
}

void BicMotifSeedToPssms::init(const std::string& seed) {
    m_pssm.resize(static_cast<int>(seed.size()));
    m_pssm.reset_prior(m_prior);
    m_pssm.count(seed.begin(), 1.0f, 1);
    m_pssm.normalize();
    m_pssm.m_min_range = m_from;
    m_pssm.m_max_range = m_to;
    m_pssm.m_bidirect = m_dir != 0;
}

bool BicMotifSeedToPssms::masked(int gene, int start) const {
    const std::vector<int>& mask = m_mask[gene];
    const int n = static_cast<int>(mask.size());
    const int a = start + m_motif_from, b = start + m_motif_to;
    return (a >= 0 && a < n && mask[a]) || (b >= 0 && b < n && mask[b]);
}

int BicMotifSeedToPssms::max_like_match(int gene, float& best, int& dir) const {
    const std::string& seq = m_genome.get_promoter(gene);
    best = -3.4028235e+36f;
    dir = 1;
    int at = 0;
    const int end = std::min(m_to, static_cast<int>(seq.size()) - m_pssm.width());
    float ll = 0.0f;
    for (int s = std::max(0, m_from); s < end; ++s) {
        if (masked(gene, s))
            continue;
        m_pssm.calc_like(seq.begin() + s, ll);
        if (ll > best) {
            best = ll;
            dir = 1;
            at = s;
        }
        if (m_dir) {
            m_pssm.calc_like_rc(seq.begin() + s, ll);
            if (ll > best) {
                best = ll;
                dir = -1;
                at = s;
            }
        }
    }
    return at;
}

void BicMotifSeedToPssms::find_best_threshold(bool final) {
    m_hits.clear();
    for (ds_bitvec_iter it(m_allowed); it; ++it) {
        const int gene = it;
        if (gene >= m_genome.id_space_size())
            continue;
        MlHit h{gene, 0, 0.0f, 1};
        h.m_pos = max_like_match(gene, h.m_ml, h.m_dir);
        m_hits.push_back(h);
    }
    std::stable_sort(m_hits.begin(), m_hits.end(),
                     [](const MlHit& a, const MlHit& b) { return a.m_ml > b.m_ml; });
    m_best_hit = 0;
    const int total = static_cast<int>(m_hits.size());
    const int focus = m_focus_count;
    const int need = static_cast<int>(m_min_bic_frac * static_cast<float>(focus));
    float best = 0.0f;
    int all = 0, in = 0;
    const int limit = std::min(total, m_max_vars + 1);
    for (int i = 0; i < limit; ++i) {
        // The genes above hit i form a set only where the likelihood changes.
        if (i > 0 && m_hits[i].m_ml != m_hits[i - 1].m_ml && in > need) {
            const float lp = m_binom.log_hg(total, focus, all, in);
            if (!final) {
                if (lp < best) {
                    best = lp;
                    m_best_hit = i;
                    m_fp_thresh = m_hits[i - 1].m_ml;
                }
            } else {
                if (lp < -m_fp_thresh_score) {
                    // The deepest rank that still passes.
                    m_best_hit = i;
                    m_fp_thresh = m_hits[i - 1].m_ml;
                }
                if (lp < best)
                    best = lp;
            }
        }
        ++all;
        if (m_focus.get_ind(m_hits[i].m_gene))
            ++in;
    }
    m_score = -best;
    if (m_logit)
        std::cerr << "best thresh " << (final ? "final " : "") << m_fp_thresh << " at " << m_best_hit
                  << " score " << m_score << std::endl;
}

void BicMotifSeedToPssms::assess_pssm() {
    m_next_pssm.resize(m_pssm.width());
    m_next_pssm.reset_prior(m_prior);
    for (int i = 0; i < m_best_hit; ++i) {
        const MlHit& h = m_hits[i];
        if (!m_focus.get_ind(h.m_gene))
            continue;
        m_next_pssm.count(m_genome.get_promoter(h.m_gene).begin() + h.m_pos, 1.0f, h.m_dir);
    }
    m_next_pssm.normalize();
    m_motif_from = -1;
    m_motif_to = -1;
    for (int c = 0; c < m_next_pssm.width(); ++c) {
        DnaProbVec& col = m_next_pssm.m_profile[c];
        if (col.get_entropy() > m_max_pos_entropy) {
            col = DnaProbVec();
        } else {
            if (m_motif_from == -1)
                m_motif_from = c;
            m_motif_to = c;
        }
    }
    m_next_pssm.m_min_range = m_pssm.m_min_range;
    m_next_pssm.m_max_range = m_pssm.m_max_range;
    m_next_pssm.m_bidirect = m_pssm.m_bidirect;
    m_pssm = m_next_pssm;
}

void BicMotifSeedToPssms::attempt_add(const std::string& seed, bool first) {
    m_score = 0.0f;
    for (bool start = true;; start = false) {
        const float prev_score = m_score;
        const int prev_from = m_motif_from, prev_to = m_motif_to;
        m_prev_pssm = m_pssm;
        if (start && first)
            init(seed);
        else
            assess_pssm();
        find_best_threshold(false);
        if (m_score < m_thresh_score)
            return;
        if (m_score > prev_score) {
            if (m_logit)
                std::cerr << "attempt improving, score " << m_score << std::endl;
            continue;
        }
        m_pssm = m_prev_pssm;
        m_score = prev_score;
        m_motif_from = prev_from;
        m_motif_to = prev_to;
        return;
    }
}

bool BicMotifSeedToPssms::is_already_covered(const std::string& seed) const {
    const std::string padded = "NNNN" + seed + "NNNN";
    for (std::size_t k = 0; k < m_pssms.size(); ++k) {
        DnaPSSM pssm = m_pssms[k];
        pssm.m_min_range = 0;
        pssm.m_max_range = 1000;
        float best = 0.0f;
        int dir = 1;
        pssm.max_like_match(padded, best, dir);
        if (m_logit)
            std::cerr << "test " << seed << " ... " << best << " " << m_fp_threshs[k] << std::endl;
        if (best >= m_fp_threshs[k])
            return true;
    }
    return false;
}

void BicMotifSeedToPssms::mask_match(int gene, float thresh, int id, bool report) {
    const std::string& seq = m_genome.get_promoter(gene);
    const int length = static_cast<int>(seq.size());
    const int w = m_pssm.width();
    const int end = std::min(m_to, length - w);
    auto mark = [&](int s, int dir, float ll) {
        if (m_gen_pos_rpt)
            m_pos_out << id << "\t" << gene << "\t" << s << "\t" << dir << "\t" << ll << "\n";
        if (m_logit)
            std::cerr << "masking " << (dir == 1 ? "" : "rc ") << gene << " at " << s << " ll " << ll
                      << std::endl;
        for (int p = s + m_motif_from; p <= s + m_motif_to; ++p)
            if (p >= 0 && p < length)
                m_mask[gene][p] = 1;
        if (report)
            m_mot_hits[gene].push_back({s, ll, dir, true, seq.substr(s, w)});
    };
    float ll = 0.0f;
    for (int s = std::max(0, m_from); s < end; ++s) {
        if (masked(gene, s))
            continue;
        m_pssm.calc_like(seq.begin() + s, ll);
        if (ll >= thresh)
            mark(s, 1, ll);
        if (m_dir && !masked(gene, s)) {
            m_pssm.calc_like_rc(seq.begin() + s, ll);
            if (ll >= thresh)
                mark(s, -1, ll);
        }
    }
}

std::string BicMotifSeedToPssms::flank_text(const MlHit& hit) const {
    const std::string& seq = m_genome.get_promoter(hit.m_gene);
    const int length = static_cast<int>(seq.size());
    const int from = hit.m_pos - m_flank_bp, to = hit.m_pos + m_pssm.width() + m_flank_bp; // [from, to)
    std::string out;
    auto put = [&](int p, bool rc) {
        if (p < 0 || p >= length)
            out.push_back('*');
        else if (seq[p] == '\0')
            out.push_back('0');
        else
            out.push_back(rc ? complement(seq[p]) : seq[p]);
    };
    if (hit.m_dir == 1)
        for (int p = from; p < to; ++p)
            put(p, false);
    else
        for (int p = to - 1; p >= from; --p)
            put(p, true);
    return out;
}

void BicMotifSeedToPssms::report_pssm(int id) {
    const std::string consensus = m_pssm.get_consensus();
    m_pssm.write_tab(m_pssmd_out, m_pssm_id);
    m_pssmk_out << m_pssm_id << "\t" << id << "\t" << consensus << "\t" << m_from << "\t" << m_to << "\t"
                << m_score << "\t" << m_dir << "\n";
    std::ofstream flank;
    if (m_gen_flank)
        flank.open(m_flank_dir + consensus + "_flank.fasta", std::ios::app);
    for (int i = 0; i < m_best_hit; ++i) {
        const MlHit& h = m_hits[i];
        if (!m_focus.get_ind(h.m_gene))
            continue;
        m_motfps_out << id << "\t" << consensus << "\t" << h.m_gene << "\n";
        if (m_gen_flank)
            flank << ">" << h.m_gene << "\n" << flank_text(h) << "\n";
    }
    m_motfps_out.flush();
    m_pssmk_out.flush();
    m_pssmd_out.flush();
    ++m_pssm_id;
}

void BicMotifSeedToPssms::optimize(int id, const ds_bitvec& genes, const std::vector<std::string>& seeds) {
    m_pssms.clear();
    m_fp_threshs.clear();
    clear_masks();
    for (std::vector<MotHit>& hits : m_mot_hits)
        hits.clear();
    m_focus = genes;
    m_focus.set_size(m_allowed.size());
    m_focus_count = m_focus.on_bits_and(m_allowed);
    for (const std::string& raw : seeds) {
        const int length = static_cast<int>(raw.size());
        int pad = 0;
        if (length < m_max_pat_length)
            pad = std::min(m_max_pat_length - length, m_max_pad);
        const std::string seed = std::string(pad, 'N') + raw + std::string(pad, 'N');
        m_motif_from = pad;
        m_motif_to = pad + length;
        if (is_already_covered(seed)) {
            if (m_logit)
                std::cerr << raw << " covered" << std::endl;
            continue;
        }
        m_dir = 0;
        attempt_add(seed, true);
        const float single_score = m_score;
        const DnaPSSM single_pssm = m_pssm;
        const int single_from = m_motif_from, single_to = m_motif_to;

        m_motif_from = pad;
        m_motif_to = pad + length;
        m_dir = 1;
        attempt_add(seed, true);
        if (m_score < single_score && single_score > m_thresh_score) {
            if (m_logit)
                std::cerr << "single dir is better" << std::endl;
            m_pssm = single_pssm;
            m_score = single_score;
            m_motif_from = single_from;
            m_motif_to = single_to;
            m_dir = 0;
        }
        if (m_score > m_thresh_score) {
            if (m_logit)
                std::cerr << "adding " << m_pssm.get_consensus() << " ... score " << m_score << std::endl;
            find_best_threshold(true);
            report_pssm(id);
            m_pssms.push_back(m_pssm);
            m_fp_threshs.push_back(m_fp_thresh);
            const std::vector<MlHit> accepted(m_hits.begin(), m_hits.begin() + m_best_hit);
            for (const MlHit& h : accepted)
                if (m_focus.get_ind(h.m_gene))
                    mask_match(h.m_gene, m_fp_thresh, id, true);
        }
    }
}

void BicMotifSeedToPssms::optimize_pssm(int id, const ds_bitvec& genes, DnaPSSM& pssm, float& score,
                                        bool dry) {
    clear_masks();
    m_focus = genes;
    m_focus.set_size(m_allowed.size());
    m_focus_count = m_focus.on_bits_and(m_allowed);
    const int saved_from = m_from, saved_to = m_to;
    m_from = pssm.m_min_range;
    m_to = pssm.m_max_range;
    m_pssm = pssm;
    m_dir = pssm.m_bidirect ? 1 : 0;
    m_motif_from = 0;
    m_motif_to = pssm.width() - 1;
    find_best_threshold(false);
    if (m_logit)
        std::cerr << "Score after thresh " << m_score << std::endl;
    if (m_score < m_thresh_score || dry) {
        score = m_score;
        m_from = saved_from;
        m_to = saved_to;
        return;
    }
    attempt_add(m_pssm.get_consensus(), false);
    if (m_logit)
        std::cerr << "after opti, score = " << m_score << std::endl;
    if (m_score >= m_fp_thresh_score) {
        report_pssm(id);
        find_best_threshold(true);
        m_pssms.push_back(m_pssm);
        m_fp_threshs.push_back(m_fp_thresh);
        const std::vector<MlHit> accepted(m_hits.begin(), m_hits.begin() + m_best_hit);
        for (const MlHit& h : accepted)
            if (m_focus.get_ind(h.m_gene))
                mask_match(h.m_gene, m_fp_thresh, id, true);
    }
    pssm = m_pssm;
    score = m_score;
    m_from = saved_from;
    m_to = saved_to;
}

float BicMotifSeedToPssms::get_best_threshold(DnaPSSM& pssm, const ds_bitvec& genes, float& score) {
    optimize_pssm(-1, genes, pssm, score, true);
    return m_fp_thresh;
}
