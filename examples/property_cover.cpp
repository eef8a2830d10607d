// property_cover: the property road from one option file. Builds one graph of expression conditions
// (layer 0), PSSM hits on promoters (layer 1, optional) and annotation classes (layer 2, optional),
// weighs it by layer, reads candidate property biclusters and picks the subset that best explains
// the graph in the chosen layers.
//
//   property_cover <option file>      (see examples/README.md for the scopes and keys)
#include "BicSetCoverGreedy.h"
#include "ExampleProp.h"
#include "PropVarBiclust.h"
#include "ds/BitVecIter.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "property_cover", opts))
        return rc;

    PropGraphInput in(opts);
    if (!in.build(opts))
        return 1;
    const PropVarGraphLayers& graph = *in.graph;
    PropWgtSchemeGroupIndeg& wgt = *in.wgt;

    std::ofstream nodes_out(opts.get_str("Tables", "OutPropNodes", true));
    nodes_out << "node\tlayer\tgroup\tprop\tname\tedges\tpos_genes\n";
    for (int n = 0; n < graph.m_max_prop_node; ++n)
        nodes_out << n << "\t" << graph.node_layer(n) << "\t" << graph.node_group(n) << "\t"
                  << graph.get_property_number(n) << "\t" << in.prop_name(n) << "\t"
                  << graph.node_out_edges_num(n) << "\t" << wgt.get_pos_genes(n).on_bits() << "\n";

    PBicSet set(graph, wgt);
    if (!set.read(opts.get_str("Tables", "InBick", true), opts.get_str("Tables", "InBicd", true)))
        return 1;
    std::ofstream cand_out(opts.get_str("Tables", "OutCandidates", true));
    cand_out << "id\tfile_score\tscore\tprops\tvars\n";
    for (int b = 0; b < set.size(); ++b)
        cand_out << b << "\t" << set.m_scores[b] << "\t" << set.m_bics[b].m_score << "\t"
                 << set.m_bics[b].m_exps.on_bits() << "\t" << set.m_bics[b].m_vars.on_bits() << "\n";

    // Every candidate carries the prior: PriorFactor of its first gain is held back.
    ds_bitvec marks(set.size());
    marks.set(true);
    const std::vector<int>& layers = *opts.get_ints("Cover", "FocusLayers", true);
    ds_bitvec focus(graph.m_max_prop_node);
    for (int n = 0; n < graph.m_max_prop_node; ++n)
        for (int l : layers)
            if (graph.node_layer(n) == l)
                focus.set_ind(n);
    BicSetCoverGreedy cover(graph, wgt, set, &marks, opts.get_float("Cover", "PriorFactor", true), false,
                            opts.get_int("Cover", "Verify", true) != 0);
    cover.optimize(focus);
    std::list<PropVarBiclust> chosen;
    std::vector<int> ids;
    cover.get_active_list(chosen, ids);

    std::ofstream cover_out(opts.get_str("Tables", "OutCover", true)),
        bick(opts.get_str("Tables", "OutBick", true)), bicd(opts.get_str("Tables", "OutBicd", true));
    if (!nodes_out || !cand_out || !cover_out || !bick || !bicd) {
        std::cerr << "Cannot write the output tables" << std::endl;
        return 1;
    }
    cover_out << "id\tscore\tprops\tvars\n";
    size_t i = 0;
    for (const PropVarBiclust& b : chosen) {
        cover_out << ids[i] << "\t" << b.m_score << "\t" << b.m_exps.on_bits() << "\t" << b.m_vars.on_bits()
                  << "\n";
        b.dump_to_tables(ids[i], graph, bick, bicd);
        ++i;
    }
    std::cout << ids.size() << " of " << set.size() << " candidates selected" << std::endl;
    return 0;
}
