// ISASeedOpti: refines a property bicluster seed by the iterative signature algorithm, alternating
// thresholded scores of the properties and of the genes.
#ifndef VESK_BIC_ISASEEDOPTI_H
#define VESK_BIC_ISASEEDOPTI_H

#include "PBicLocalOpt.h"
#include "PropVarBiclust.h"
#include "PropVarGraphBase.h"
#include "PropWgtScheme.h"
#include "ds/BitVec.h"

#include <string>
#include <vector>

class options;

// Keys in the scope given, required: TG, PropSetInterToConverg, InitTCFactor, MinTC, InitTGFactor,
// MinTG (float); StableIterToStop, MaxIters, MinNumProps (int). Optional: Logit.
//
// Scores are the bicluster's margins against weighted sets: with gene weights g(v) (1 inside, 0
// out) and the gene mass m(b) of each bin, a property's score is
//     sum over bins b of non_edge(p, b) * m(b)  +  sum over its edges to genes v of edge_cnc * g(v),
// and with the property set P a gene's score is its bin's sum over P of non_edge(p, bin) plus its own
// part, the edge_cnc of its edges from P. Each side is turned into z-scores (population mean and
// deviation over all nodes of that side; all 0 when the deviation is 0) and thresholded: properties at
// or above m_tc, genes at or above m_tg. On the first pass m_tc is the smallest z-score among the
// seed's properties (from 1000.0) times InitTCFactor, at least MinTC; m_tg likewise from the seed's
// genes with InitTGFactor and MinTG, or TG when the seed has no genes. A pass whose property set
// changes by a share (|old xor new| / |old or new|) above PropSetInterToConverg restarts the stable
// count; StableIterToStop stable passes, MaxIters passes, or fewer than MinNumProps properties end it.
// The seed becomes the last sets, or is left empty when fewer than MinNumProps properties remain.
class ISASeedOpti : public PBicLocalOpt {
public:
    ISASeedOpti(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt, options& opts,
                const std::string& scope);

    void grow(PropVarBiclust& bic) override;

    // The steps of grow, public for callers that drive them.
    void size_vectors();
    void add_gene_node(int node, float weight);
    void del_gene_node(int node);
    void restimate_prop_stats();
    void init_tc(const ds_bitvec& props);
    // The property set from the z-scores; its size.
    int reinit_bic_props();
    void restimate_gene_stats();
    void init_tg(const ds_bitvec& genes);
    // The gene set from the z-scores; returns the share of the property set that changed this pass.
    float reinit_bic_genes();
    float prop_z(int node) const;
    float gene_z(int node) const;

    const PropVarGraphBase& m_graph;
    PropWgtSchemeBase& m_wgt;
    float m_tg_default;
    float m_prop_set_inter_to_converg;
    float m_init_tc_factor, m_min_tc;
    float m_init_tg_factor, m_min_tg;
    int m_stable_iter_to_stop;
    int m_max_iters;
    int m_min_num_props;
    bool m_debug;

    float m_tc, m_tg;
    std::vector<float> m_prop_score;  // by property node
    std::vector<float> m_gene_score;  // by node
    std::vector<float> m_gene_weight; // by node
    std::vector<float> m_bin_mass;    // by bin
    float m_prop_mean, m_prop_sd, m_gene_mean, m_gene_sd;
    ds_bitvec m_props, m_prev_props; // by node
    ds_bitvec m_genes;               // by node
};

#endif
