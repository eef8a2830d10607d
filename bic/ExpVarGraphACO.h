// ExpVarGraphACO: the condition-variable graph built from a data set with level factors and group
// orientations; ExpVarGraphClassify, the same with the condition nodes split by a class.
#ifndef VESK_BIC_EXPVARGRAPHACO_H
#define VESK_BIC_EXPVARGRAPHACO_H

#include "ExpClasses.h"
#include "ExpVarGraphBase.h"

#include <functional>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

// Keys, all in the scope given and all required: Logit, EdgePThresh and EdgeNonZeroP unless the
// scope is "Default" (then no edge is ever made from data); AllowConditionOrientation and
// AllowVarOrientation when `build`; and in init ExpCardinality, VarCardinality, Factors,
// StateOfGroupPair, BuildEdgesFromFile, with EdgesTable when BuildEdgesFromFile is 1.
class ExpVarGraphACO : public ExpVarGraphBase {
public:
    // With `build` false the graph stays empty until init is called.
    ExpVarGraphACO(VarUniverse& universe, StateDataSetBase& dataset, options& opts, const std::string& scope,
                   bool build);

    // Groups, nodes and edges, from the data or from the edge table.
    void init(options& opts, const std::string& scope, bool both_exp_orientations,
              bool both_var_orientations);

    // Condition nodes of one level: group 2*level for sign 1, else 2*level+1. Both factors of the
    // level are set whatever the sign: factor and -factor.
    void add_exp_group(int level, float factor, int sign) override;
    // Variable nodes of one level, as add_exp_group; only the factor of the chosen group is set.
    void add_var_group(int level, float factor, int sign);
    // An edge per (condition node, variable node of the level's group) whose value is non-zero and
    // whose group-pair state has a probability strictly above EdgePThresh.
    void add_var_edges(int level, int sign);
    // Group-pair states from the product of the two groups' factors, as an alternative to
    // StateOfGroupPair.
    void setup_group_state_map();

    // One line per edge id below m_edge_count, in use or not: id, source, destination, weight, by tabs.
    // Weights are written with the fewest digits that read back to the same float.
    void write_table(std::ostream& out) const;
    // Four white-space separated values a line until the stream fails: the id is ignored, each
    // line becomes add_edge(source, destination, 0, weight), so the state of a read edge is 0.
    // Lines of an unused id (source and destination -1) are skipped; any other id that isn't a
    // condition node as source and a variable node as destination is fatal.
    void build_edges_from_table(std::istream& in);

    std::vector<float> m_exp_group_factor;
    std::vector<float> m_var_group_factor;
    float m_edge_p_thresh;
    float m_edge_non_zero_p;

protected:
    // add_exp_group of the class being built: constructors pass their own, never the override.
    typedef std::function<void(int level, float factor, int sign)> ExpGroupMaker;
    // The body of init, with `exp_group` making each level's condition nodes.
    void build_graph(options& opts, const std::string& scope, bool both_exp_orientations,
                     bool both_var_orientations, const ExpGroupMaker& exp_group);
};

class ExpVarGraphClassify : public ExpVarGraphACO {
public:
    // Builds at once with both orientations on both sides.
    ExpVarGraphClassify(VarUniverse& universe, StateDataSetBase& dataset, const ExpClasses& classes, int cls,
                        options& opts, const std::string& scope);

    // Sign 1: group 2*level gets the conditions of class `m_class` or unclassified. Any other sign:
    // group 2*level+1 gets the conditions whose class isn't `m_class`, so an unclassified
    // condition stands in both groups.
    void add_exp_group(int level, float factor, int sign) override;

    const ExpClasses& m_classes;
    int m_class;
};

#endif
