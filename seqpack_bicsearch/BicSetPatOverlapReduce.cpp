// BicSetPatOverlapReduce: window merging, hot genes and pairwise overlap reduction of a bicluster set.
#include "BicSetPatOverlapReduce.h"

#include "ds/BitVecIter.h"
#include "options.h"

#include <algorithm>
#include <climits>
#include <fstream>
#include <iostream>
#include <map>

BicSetPatOverlapReduce::BicSetPatOverlapReduce(ExpSeqDB& db, options& opts, const std::string& scope)
    : m_db(db), m_var_group(opts.get_int(scope, "VarGroup", true)) {
    m_score.reset(new BicAssocPatScore(db.m_graph, *db.m_wgt, opts, opts.get_str(scope, "PatScore", true)));
    std::ifstream tab(opts.get_str("Tables", "score_tab", true));
    std::ifstream glob(opts.get_str("Tables", "glob_score_tab", true));
    m_score->read_score_stat(tab, glob);
}

void BicSetPatOverlapReduce::unify_on_range() {
    BicSet& set = *m_db.m_bic_set;
    std::map<std::string, std::vector<int>> groups;
    for (int b = 0; b < set.size(); ++b)
        if (set.m_active.get_ind(b) && set.m_patterns[b] != "none")
            groups[set.m_patterns[b]].push_back(b);
    auto end_of = [](int to) { return to < 0 ? INT_MAX : to; };
    for (auto& g : groups) {
        if (g.second.size() < 2)
            continue;
        std::cerr << "will integrate " << g.first << std::endl;
        std::vector<int>& ids = g.second;
        std::stable_sort(ids.begin(), ids.end(),
                         [&](int a, int b) { return set.m_pat_from[a] < set.m_pat_from[b]; });
        int keep = ids[0];
        for (std::size_t i = 1; i < ids.size(); ++i) {
            const int b = ids[i];
            if (set.m_pat_from[b] > end_of(set.m_pat_to[keep])) {
                keep = b;
                continue;
            }
            std::cerr << "pats are " << set.m_patterns[keep] << " " << set.m_patterns[b] << std::endl;
            std::cerr << "ranges are " << set.m_pat_from[keep] << " " << set.m_pat_to[keep] << " "
                      << set.m_pat_from[b] << " " << set.m_pat_to[b] << std::endl;
            if (set.m_pat_to[keep] >= 0 && (set.m_pat_to[b] < 0 || set.m_pat_to[b] > set.m_pat_to[keep]))
                set.m_pat_to[keep] = set.m_pat_to[b];
            ExpVarBiclust& into = set.m_bics[keep];
            const ExpVarBiclust& from = set.m_bics[b];
            for (ds_bitvec_iter it(from.m_exps); it; ++it)
                if (!into.m_exps.get_ind(it))
                    into.add_exp_node(it);
            for (ds_bitvec_iter it(from.m_vars); it; ++it)
                if (!into.m_vars.get_ind(it))
                    into.add_var_node(it);
            set.m_active.clr_ind(b);
        }
    }
}

void BicSetPatOverlapReduce::find_hot_genes() {
    BicSet& set = *m_db.m_bic_set;
    m_hot.assign(set.size(), ds_bitvec(m_db.m_graph.m_var_num));
    for (int b = 0; b < set.size(); ++b) {
        if (!set.m_active.get_ind(b))
            continue;
        ds_bitvec genes;
        set.m_bics[b].get_vars_set(genes);
        const float full = m_score->score_set(genes);
        for (ds_bitvec_iter it(genes); it; ++it) {
            ds_bitvec without = genes;
            without.clr_ind(it);
            if (m_score->score_set(without) < full)
                m_hot[b].set_ind(it);
        }
    }
}

void BicSetPatOverlapReduce::reduce_bic_set(float thresh, std::ostream& bick, std::ostream& bicd) {
    BicSet& set = *m_db.m_bic_set;
    unify_on_range();
    find_hot_genes();
    for (int a = 0; a < set.size(); ++a) {
        for (int b = a + 1; b < set.size() && set.m_active.get_ind(a); ++b) {
            if (!set.m_active.get_ind(b))
                continue;
            const int v_inter = m_hot[a].on_bits_and(m_hot[b]);
            const int e_inter = set.m_bics[a].m_exps.on_bits_and(set.m_bics[b].m_exps);
            const int v_size = std::min(m_hot[a].on_bits(), m_hot[b].on_bits());
            const int e_size = std::min(set.m_bics[a].m_exps.on_bits(), set.m_bics[b].m_exps.on_bits());
            const float v_frac = v_size > 0 ? static_cast<float>(v_inter) / static_cast<float>(v_size) : 0.0f;
            const float e_frac = e_size > 0 ? static_cast<float>(e_inter) / static_cast<float>(e_size) : 0.0f;
            if (!(v_frac > thresh && e_frac > thresh))
                continue;
            std::cerr << "frac " << v_frac << " " << e_frac << std::endl;
            if (set.m_scores[a] < set.m_scores[b]) {
                std::cerr << "remove b1 " << a << std::endl;
                set.m_active.clr_ind(a);
            } else {
                std::cerr << "remove b2 " << b << std::endl;
                set.m_active.clr_ind(b);
            }
        }
    }
    for (int b = 0; b < set.size(); ++b)
        if (set.m_active.get_ind(b)) {
            std::cerr << "reduced set " << b << std::endl;
            set.m_bics[b].dump_to_tables(b, bick, bicd);
        }
}
