// BicSetPssmizeReduce: PSSMs of a bicluster set's patterns, reported best first with the rest rescored.
#include "BicSetPssmizeReduce.h"

#include "DnaSeqChar.h"
#include "options.h"

#include <algorithm>
#include <fstream>
#include <iostream>

BicSetPssmizeReduce::BicSetPssmizeReduce(ExpSeqDB& db, options& opts, const std::string& scope)
    : m_db(db), m_allowed(db.m_genome.id_space_size()), m_padding(opts.get_str(scope, "PaddingString", true)),
      m_min_p_for_match(opts.get_float(scope, "MinPForMatch", true)),
      m_min_avg_p_for_match(opts.get_float(scope, "MinAvgPForMatch", true)),
      m_is_same_pssm_frac(opts.get_float(scope, "IsSamePssmFrac", true)),
      m_min_score(opts.get_float(scope, "MinScore", true)),
      m_min_reduce_score(opts.get_float(scope, "MinReduceScore", true)),
      m_max_gene_overlap(opts.get_float(scope, "MaxGeneOverlap", true)),
      m_max_reduce_factor(opts.get_float(scope, "MaxReduceFactor", true)),
      m_min_cond_reduce_score(opts.get_float(scope, "MinCondReduceScore", true)),
      m_var_group(opts.get_int(scope, "VarGroup", true)) {
    for (int g = 0; g < db.m_genome.id_space_size(); ++g)
        if (!db.m_genome.get_promoter(g).is_empty())
            m_allowed.set_ind(g);
    const std::string asap_scope = opts.get_str(scope, "ASAP", true);
    m_asap.reset(new ASAPCalc(db.m_graph, *db.m_wgt, opts, asap_scope, nullptr));
    std::ifstream tab(opts.get_str("Tables", "score_tab", true));
    std::ifstream glob(opts.get_str("Tables", "glob_score_tab", true));
    m_asap->read_score_stat(tab);
    m_score.reset(new BicPssmScore(*m_asap, db.m_genome, m_allowed, opts, asap_scope));
    m_em.reset(new BicMotifEM(*m_score, db.m_genome, opts, opts.get_str(scope, "EM", true)));
}

bool BicSetPssmizeReduce::is_match_pssms(const std::string& pattern) const {
    const int len = static_cast<int>(pattern.size());
    for (const Entry& e : m_entries) {
        const DnaPSSM& p = e.m_pssm;
        // The last offset, width - length, is not tried.
        for (int off = 0; off < p.width() - len; ++off) {
            bool all = true;
            float sum = 0.0f;
            for (int i = 0; i < len && all; ++i) {
                DnaSeqDegChar c;
                c.set_char_encoding(pattern[i]);
                // The probability of a degenerate letter is that of the bases it accepts (A G C T bits).
                const int bits = c.m_val & 15;
                const DnaProbVec& col = p.m_profile[off + i];
                const float pr = ((bits & 1) ? col.m_prob[0] : 0.0f) + ((bits & 4) ? col.m_prob[1] : 0.0f) +
                                 ((bits & 2) ? col.m_prob[2] : 0.0f) + ((bits & 8) ? col.m_prob[3] : 0.0f);
                all = pr >= m_min_p_for_match;
                sum += pr;
            }
            if (all && len > 0 && sum / static_cast<float>(len) > m_min_avg_p_for_match)
                return true;
        }
    }
    return false;
}

void BicSetPssmizeReduce::dump_bic(int id, const Entry& e, std::ostream& key, std::ostream& data,
                                   std::ostream& bics) const {
    std::cerr << "will tab report pssm id " << id << std::endl;
    e.m_pssm.write_tab(data, id);
    key << id << "\t" << e.m_bic << "\t" << e.m_pssm.get_consensus() << "\t" << e.m_pssm.m_min_range << "\t"
        << e.m_pssm.m_max_range << "\t" << e.m_score << "\t" << (e.m_pssm.m_bidirect ? 1 : 0) << "\n";
    bics << id << "\t" << e.m_bic << "\t" << e.m_score << "\t" << e.m_genes.on_bits() << "\t";
    for (std::size_t i = 0; i < e.m_conds.size(); ++i)
        bics << (i ? "," : "") << e.m_conds[i];
    bics << (e.m_conds.empty() ? "-" : "") << "\n";
}

void BicSetPssmizeReduce::reduce_bic_set(std::ostream& key, std::ostream& data, std::ostream& bics) {
    const BicSet& set = *m_db.m_bic_set;
    m_entries.clear();
    for (int b = 0; b < set.size(); ++b) {
        if (!set.m_active.get_ind(b) || !(set.m_scores[b] > m_min_score) || set.m_patterns[b] == "none")
            continue;
        const std::string& pattern = set.m_patterns[b];
        if (is_match_pssms(pattern)) {
            std::cerr << "Matched prev, cont" << std::endl;
            continue;
        }
        const std::string seed = m_padding + pattern + m_padding;
        const int from = set.m_pat_from[b] < 0 ? 0 : set.m_pat_from[b];
        const int to = set.m_pat_to[b] < 0 ? 1000000 : set.m_pat_to[b];
        Entry e{b, DnaPSSM(), 0.0f, ds_bitvec(), {}, false, false};
        for (int dir = 0; dir < 2; ++dir) {
            const float s = m_em->optimize(seed, from, to, dir);
            if (dir == 0 || s > e.m_score) {
                e.m_score = s;
                e.m_pssm = m_em->m_pssm;
                e.m_genes = m_asap->m_set;
                std::vector<int> groups;
                m_asap->get_conds(e.m_conds, groups);
            }
        }
        std::cerr << "em finished, pssm is " << e.m_pssm.get_consensus() << " score " << e.m_score
                  << std::endl;
        m_entries.push_back(e);
    }

    std::vector<std::pair<float, int>> order;
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        order.push_back({m_entries[i].m_score, static_cast<int>(i)});
    std::stable_sort(
        order.begin(), order.end(),
        [](const std::pair<float, int>& a, const std::pair<float, int>& b) { return a.first > b.first; });
    int id = 0;
    for (const auto& o : order) {
        Entry& e = m_entries[o.second];
        if (e.m_erased)
            continue;
        dump_bic(id++, e, key, data, bics);
        e.m_reported = true;
        for (const auto& other : order) {
            Entry& f = m_entries[other.second];
            if (f.m_reported || f.m_erased)
                continue;
            const int inter = e.m_genes.on_bits_and(f.m_genes);
            const int size = std::min(e.m_genes.on_bits(), f.m_genes.on_bits());
            const float frac = size > 0 ? static_cast<float>(inter) / static_cast<float>(size) : 0.0f;
            bool keep = frac <= m_max_gene_overlap;
            if (keep) {
                // Rescored on its genes outside the reported bicluster.
                ds_bitvec left = f.m_genes;
                left.minus(e.m_genes);
                const float s = m_asap->score_set(left, nullptr, -1);
                keep = s > m_min_reduce_score && s * m_max_reduce_factor >= f.m_score;
                if (keep) {
                    f.m_genes = left;
                    f.m_score = s;
                    f.m_conds.clear();
                    for (int c = 0; c < static_cast<int>(m_asap->m_node_score.size()); ++c)
                        if (m_asap->m_node_score[c] > 0.0f &&
                            m_asap->m_node_score[c] >= m_min_cond_reduce_score)
                            f.m_conds.push_back(c);
                }
            }
            if (!keep) {
                std::cerr << "will erase " << f.m_bic << std::endl;
                f.m_erased = true;
            }
        }
    }
}
