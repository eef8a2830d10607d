// property_cover: the property road from one option file. Builds one graph of expression conditions
// (layer 0), PSSM hits on promoters (layer 1, optional) and annotation classes (layer 2, optional),
// weighs it by layer, reads candidate property biclusters and picks the subset that best explains
// the graph in the chosen layers.
//
//   property_cover <option file>      (see examples/README.md for the scopes and keys)
#include "ArrayVarEC.h"
#include "BicSetCoverGreedy.h"
#include "DnaSeqGenomePromoters.h"
#include "ExampleExpr.h"
#include "PropVarBiclust.h"
#include "PropVarLayers.h"
#include "PropWgtScheme.h"
#include "PssmSet.h"
#include "StateDataSetReal.h"
#include "ValSpaceProb.h"
#include "VarClasses.h"
#include "VarUniverse.h"
#include "ds/BitVecIter.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

namespace {

// Name of a property node: the condition name, the PSSM consensus or the class name.
std::string prop_name(const PropVarGraphLayers& g, int node, const StateDataSetReal& data,
                      const PssmSet* pssms, const VarClasses* classes) {
    const int id = g.node_prop(node);
    switch (g.node_layer(node)) {
    case 0:
        return id < static_cast<int>(data.m_e_names.size()) ? data.m_e_names[id] : "";
    case 1:
        return pssms ? pssms->m_consensus[id] : "";
    default:
        return classes ? classes->m_class_names[id] : "";
    }
}
} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "property_cover", opts))
        return rc;

    ValSpaceProb space(opts, "ValSpace", false);
    VarUniverse universe(&space);
    StateDataSetReal data(universe);
    if (!read_expression(opts, universe, data))
        return 1;
    std::cout << universe.size() << " genes, " << data.m_E << " conditions" << std::endl;

    PropVarGraphLayers graph(universe, opts, "Layers");
    graph.m_layers.assign(3, nullptr);
    PropVarLayerACO exp_layer(data, opts, "ExpLayer");
    graph.m_layers[0] = &exp_layer;

    std::unique_ptr<PssmSet> pssms;
    DnaSeqGenomePromoters<DnaSequence> promoters;
    std::unique_ptr<PropVarLayerPSSM> pssm_layer;
    if (opts.has_option("Tables", "Promoters")) {
        std::ifstream fasta;
        if (!open_in(fasta, opts.get_str("Tables", "Promoters", true)))
            return 1;
        promoters.read_fasta(opts.get_int("Tables", "PromoterLength", true), universe, fasta, false, false);
        pssms.reset(new PssmSet);
        pssms->read(opts.get_str("Tables", "pssm_key", true), opts.get_str("Tables", "pssm_data", true),
                    opts.get_int("Tables", "pssm_max_range", true), 0, 0.025f, false);
        pssm_layer.reset(new PropVarLayerPSSM(*pssms, promoters, opts, "PssmLayer"));
        graph.m_layers[1] = pssm_layer.get();
    }
    std::unique_ptr<VarClasses> classes;
    std::unique_ptr<PropVarLayerAnnot> annot_layer;
    if (opts.has_option("Tables", "goclskey")) {
        classes.reset(new VarClasses);
        if (!classes->read(opts.get_str("Tables", "goclskey", true), opts.get_str("Tables", "clsassoc", true),
                           universe.size(), nullptr))
            return 1;
        annot_layer.reset(new PropVarLayerAnnot(*classes, opts, "AnnotLayer"));
        graph.m_layers[2] = annot_layer.get();
    }
    graph.build_layers();
    ArrayVarEC ec(data);
    PropWgtSchemeGroupIndeg wgt(graph, ec, opts, "Weights", true);
    std::cout << graph.m_max_prop_node << " property nodes, " << graph.edges_num() << " edges" << std::endl;

    std::ofstream nodes_out(opts.get_str("Tables", "OutPropNodes", true));
    nodes_out << "node\tlayer\tgroup\tprop\tname\tedges\tpos_genes\n";
    for (int n = 0; n < graph.m_max_prop_node; ++n)
        nodes_out << n << "\t" << graph.node_layer(n) << "\t" << graph.node_group(n) << "\t"
                  << graph.get_property_number(n) << "\t"
                  << prop_name(graph, n, data, pssms.get(), classes.get()) << "\t"
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
