// PDynBiclust, a property bicluster that announces every change, relation neighbours and ranked
// properties included.
#ifndef VESK_BIC_PDYNBICLUST_H
#define VESK_BIC_PDYNBICLUST_H

#include "BinRelGraphLayers.h"
#include "DynBiclust.h"
#include "PropVarBiclust.h"
#include "PropVarGraphBase.h"
#include "PropWgtScheme.h"
#include "ds/GraphBaseEdgeIter.h"

#include <memory>
#include <vector>

// The property bicluster (its score and relation score) with the channel of DynBiclust. Codes 0 to 6
// as there; 7: the weights of a ranked property changed. The node codes of DynBiclust follow, shifted
// by one: for node k, 8 + 3k its change of side, 9 + 3k and 10 + 3k a neighbour added and deleted
// across the graph. After them, with N nodes, 8 + 3N + k for a variable node k: a variable related
// to it joined or left (m_cur_var_node tells which, and whether it is inside now; m_cur_edge is the
// relation).
//
// A variable move raises the node's own code first and 1 or 3 after it, then the neighbour codes,
// then the relation codes of every node of every related variable, and last 7 if a ranked observer
// set m_ranked_changed meanwhile (so 7 comes at most once a move). A property move raises 2 or 4,
// the node's code and the neighbour codes, then 7 if the property's layer is ranked.
class PDynBiclust : public DynBiclust, public PropVarBiclust {
public:
    PDynBiclust(const PropVarGraphLayers& graph, PropWgtSchemeBase& wgt, const BinRelGraphLayers* br_graph,
                BinRelWgtSchemeBase* br_wgt);
    PDynBiclust(const PDynBiclust&) = delete;
    PDynBiclust& operator=(const PDynBiclust&) = delete;
    ~PDynBiclust() override;

    void reset() override;
    void add_var_node(int node) override;
    void del_var_node(int node) override;
    // Property nodes are the condition nodes of the base: add_prop_node and del_prop_node come here.
    void add_exp_node(int node) override;
    void del_exp_node(int node) override;

    // Raises 5, then copies this bicluster (relation part included) to `target`.
    void remember(PropVarBiclust& target);
    // Takes the sets and sums of `source`, then raises 6.
    void revert(const PropVarBiclust& source);

    // Marks a layer as ranked: moves of its properties raise 7.
    void set_ranked_layer(int layer, bool ranked);
    bool is_ranked_layer(int layer) const {
        return layer >= 0 && layer < static_cast<int>(m_ranked_layer.size()) && m_ranked_layer[layer];
    }
    int cur_prop_node() const { return m_cur_exp_node; }

    const PropVarGraphLayers& m_layers;
    std::vector<int> m_br_adj;        // by node; variable nodes only, else -1
    std::vector<char> m_ranked_layer; // by layer
    bool m_ranked_changed;            // set by a ranked observer, cleared when 7 is raised

private:
    // After variable `node` moved: the relation code of every node of every related variable.
    void announce_relations(int node);
    void raise_ranked_if_changed();
    std::unique_ptr<GraphBaseEdgeIter> m_rel_iter;
};

#endif
