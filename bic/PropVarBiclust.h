// PropVarBiclust, a bicluster of properties and variables, scored also by the relations among its
// variables; PBicSet, a set of them read from the bicluster tables.
#ifndef VESK_BIC_PROPVARBICLUST_H
#define VESK_BIC_PROPVARBICLUST_H

#include "BinRelGraphLayers.h"
#include "DynBiclust.h"
#include "PropVarGraphBase.h"
#include "PropWgtScheme.h"
#include "SpecialFunc.h"
#include "ds/BitVec.h"
#include "ds/GraphBaseEdgeIter.h"

#include <istream>
#include <list>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

class SmallPropSet;

// The condition-variable bicluster with property nodes for condition nodes (the running score is
// the base's), plus m_br_score, the sum of the relation weights among its variables when a relation
// graph is given. m_ranked_score is left to the optimiser that ranks properties. ExpVarBiclust is a
// virtual base, shared with the event channel in PDynBiclust.
class PropVarBiclust : public virtual ExpVarBiclust {
public:
    PropVarBiclust(const PropVarGraphBase& graph, PropWgtSchemeBase& wgt, const BinRelGraphLayers* br_graph,
                   BinRelWgtSchemeBase* br_wgt);
    PropVarBiclust(const PropVarBiclust& src);
    PropVarBiclust& operator=(const PropVarBiclust& src);

    void reset() override;
    void add_var_node(int node) override;
    void del_var_node(int node) override;
    // As add_exp_node and del_exp_node, with the property wording in their fatal messages.
    virtual void add_prop_node(int node);
    virtual void del_prop_node(int node);

    // The variable nodes of `group` for the variable ids set in `vars`, those not inside yet.
    void add_var_set(const ds_bitvec& vars, int group);
    void init_prop_set_clique(const SmallPropSet& key, float wgt);
    float get_prop_margin(int node) const { return get_exp_margin(node); }
    // The base margin plus the weights of the variable's relations to variables inside.
    float get_var_margin(int node) const;
    // bick: id, score. bicd: a property's line is id, 0, its property number, its group, margin (so
    // the layer is known from the group); a variable's id, 1, variable id, group, margin. With
    // `extra`, the line id, "*", relation score, ranked score goes there.
    void dump_to_tables(int id, const PropVarGraphLayers& layers, std::ostream& bick, std::ostream& bicd,
                        std::ostream* extra = nullptr) const;

    const PropVarGraphBase& m_pgraph;
    const BinRelGraphLayers* m_br_graph;
    BinRelWgtSchemeBase* m_br_wgt;
    ds_bitvec m_var_ids; // variable ids inside, kept only with a relation graph
    std::unique_ptr<GraphBaseEdgeIter> m_br_iter;
    float m_br_score;
    float m_ranked_score;

private:
    // Sum of the relation weights from variable id `r` to the variable ids inside.
    float relation_sum(int r) const;
};

class options;

// Keys MinBrDeg (smallest count of relations inside that costs anything) and HGCacheTableM (size of
// the binomial table). The cost of a variable node with `degree` relations inside the bicluster, a
// and b the larger and the smaller of the bicluster's size (with `flag`, counting the node itself)
// and the node's relation degree: log_hg(3a, a, b, degree) - log_hg(M, a, b, degree), M the number of
// variables, floored at 0: the overlap judged in a universe of three times the bicluster against
// the whole one.
class BinRelGlobNodeCost {
public:
    BinRelGlobNodeCost(const PropVarBiclust& bic, options& opts, const std::string& scope);
    float get_node_cost(int node, int degree, bool flag);

    const PropVarBiclust& m_bic;
    int m_min_br_deg;
    BinomFuncTable m_table;
};

// The tables of BicSet over property biclusters: a property line's element is the property number,
// matched to its node through the group. Prints "will add " kind " bid " id " pid " element per line.
class PBicSet {
public:
    PBicSet(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt,
            const BinRelGraphLayers* br_graph = nullptr, BinRelWgtSchemeBase* br_wgt = nullptr);

    bool read(const std::string& bick, const std::string& bicd);
    void read(std::istream& bick, std::istream& bicd);
    // The biclusters of `bics`, all active, ids in list order.
    void init(const std::list<PropVarBiclust>& bics);
    // Appends an empty active bicluster; returns its id.
    int add_bic();
    int size() const { return static_cast<int>(m_bics.size()); }

    const PropVarGraphLayers& m_graph;
    PropWgtSchemeBase& m_wgt;
    const BinRelGraphLayers* m_br_graph;
    BinRelWgtSchemeBase* m_br_wgt;
    std::vector<PropVarBiclust> m_bics;
    ds_bitvec m_active;
    std::vector<float> m_scores;
};

#endif
