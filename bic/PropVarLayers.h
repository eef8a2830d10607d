// The property layers: PropVarLayerACO (conditions of a data set), PropVarLayerAnnot (classes of a
// VarClasses) and PropVarLayerPSSM (PSSM hits on promoters).
#ifndef VESK_BIC_PROPVARLAYERS_H
#define VESK_BIC_PROPVARLAYERS_H

#include "DnaSeqGenomePromoters.h"
#include "DnaSequence.h"
#include "Matrix.h"
#include "PropVarGraphBase.h"
#include "PssmSet.h"
#include "StateDataSetBase.h"
#include "VarClasses.h"

#include <string>
#include <vector>

class options;

// Keys, all required: EdgePThresh, EdgeNonZeroP, AllowCondOrientation, PropCardinality, Logit,
// StateOfGroupPair (triples: group counted within the layer, variable group, state) and
// VarMaxGroupId (variable groups of the state table). Level i takes group first + i, or with
// orientation first + 2i and first + 2i + 1. A value that is missing makes no edge.
class PropVarLayerACO : public PropVarLayerBase {
public:
    PropVarLayerACO(StateDataSetBase& dataset, options& opts, const std::string& scope);

    const char* get_type_name() const override { return "ACO"; }
    void build_layer_nodes(PropVarGraphLayers& graph, int layer) override;
    void build_layer_edges(PropVarGraphLayers& graph, int layer) override;
    // The edges of one variable group: a condition node of each layer group with a non-zero state
    // for the pair joins the variable if that state's probability is strictly above EdgePThresh.
    void add_var_edges(PropVarGraphLayers& graph, int var_group);
    // Condition nodes of one layer group.
    void add_exp_group(PropVarGraphLayers& graph, int group);

    StateDataSetBase& m_dataset;
    float m_edge_p_thresh;
    float m_edge_non_zero_p;
    bool m_allow_orientation;
    int m_prop_cardinality;
    bool m_debug;
    Matrix<int> m_group_state; // group within the layer by variable group
};

// One group, a node per class; an edge of weight and value 1 from a class to each member's node in
// every variable group.
class PropVarLayerAnnot : public PropVarLayerBase {
public:
    PropVarLayerAnnot(const VarClasses& classes, options& opts, const std::string& scope);

    const char* get_type_name() const override { return "Annot"; }
    void build_layer_nodes(PropVarGraphLayers& graph, int layer) override;
    void build_layer_edges(PropVarGraphLayers& graph, int layer) override;

    const VarClasses& m_classes;
};

// Key EdgePThresh. One group, a node per PSSM. The affinity of a PSSM to a promoter is
// exp(best site score - get_max_ll()), computed in double and kept as float; a promoter with an
// affinity at or above EdgePThresh gets an edge of weight 1 carrying the affinity as its value, in
// every variable group. A negative threshold makes no edges; an empty promoter makes none.
class PropVarLayerPSSM : public PropVarLayerBase {
public:
    PropVarLayerPSSM(const PssmSet& pssms, const DnaSeqGenomePromoters<DnaSequence>& promoters, options& opts,
                     const std::string& scope);

    const char* get_type_name() const override { return "PSSM"; }
    void build_layer_nodes(PropVarGraphLayers& graph, int layer) override;
    void build_layer_edges(PropVarGraphLayers& graph, int layer) override;
    // Affinity of PSSM `p` to `seq`.
    float affinity(int p, const std::string& seq) const;

    const PssmSet& m_pssms;
    const DnaSeqGenomePromoters<DnaSequence>& m_promoters;
    float m_edge_p_thresh;
};

#endif
