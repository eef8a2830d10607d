// property_search: the property hash search from one option file. Builds the layered graph of
// property_cover (conditions, optional PSSM hits, optional classes) and its weights, hashes small
// property sets shared by the genes' neighbourhoods into seeds, grows them with the chosen optimiser,
// drops results that overlap too much and writes the rest.
//
//   property_search <option file>      (see examples/README.md for the scopes and keys)
#include "ExampleProp.h"
#include "ISASeedOpti.h"
#include "PBicGreedyOpt.h"
#include "PBicLocalOpt.h"
#include "PHashBiclust.h"
#include "PropVarBiclust.h"
#include "Random.h"
#include "ds/BitVecIter.h"
#include "error.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

static constexpr char kSrc[] = "property_search";

namespace {

// The optimiser of Search::Optimizer: "isa" (scope ISA) or "greedy" (scopes Greedy and RankedObs).
std::unique_ptr<PBicLocalOpt> make_optimizer(options& opts, const PropVarGraphLayers& graph,
                                             PropWgtSchemeBase& wgt) {
    const std::string name = opts.get_str("Search", "Optimizer", true);
    if (name == "isa")
        return std::unique_ptr<PBicLocalOpt>(new ISASeedOpti(graph, wgt, opts, "ISA"));
    if (name == "greedy")
        return std::unique_ptr<PBicLocalOpt>(new PBicGreedyOpt(graph, wgt, opts, "Greedy"));
    VESK_FATAL(kSrc, "Unknown optimizer " << name << ", expected greedy or isa");
    return nullptr;
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "property_search", opts))
        return rc;
    Random::reset(opts.get_int("Random", "Seed", true));

    PropGraphInput in(opts);
    if (!in.build(opts))
        return 1;
    const PropVarGraphLayers& graph = *in.graph;
    std::unique_ptr<PBicLocalOpt> opt = make_optimizer(opts, graph, *in.wgt);

    std::ofstream out(opts.get_str("Tables", "OutPropBics", true)),
        bick(opts.get_str("Tables", "OutBick", true)), bicd(opts.get_str("Tables", "OutBicd", true));
    if (!out || !bick || !bicd) {
        std::cerr << "Cannot write the output tables" << std::endl;
        return 1;
    }

    PHashBiclust search(graph, *in.wgt, *opt, opts, "Hash");
    const size_t found = search.m_bics.size();
    search.reduce_bic_set(opts.get_float("Hash", "MaxOverlap", true));

    out << "id\tscore\tbr_score\tranked_score\tprops\tvars\tproperties\n";
    int id = 0;
    for (const PropVarBiclust& b : search.m_bics) {
        // A seed the optimiser emptied (ISA under MinNumProps) is no result.
        if (b.m_exps.on_bits() == 0 && b.m_vars.on_bits() == 0)
            continue;
        out << id << "\t" << b.m_score << "\t" << b.m_br_score << "\t" << b.m_ranked_score << "\t"
            << b.m_exps.on_bits() << "\t" << b.m_vars.on_bits() << "\t";
        const char* sep = "";
        for (ds_bitvec_iter p(b.m_exps); p; ++p) {
            out << sep << graph.node_layer(p) << ":" << in.prop_name(p);
            sep = ",";
        }
        out << "\n";
        b.dump_to_tables(id, graph, bick, bicd);
        ++id;
    }
    std::cout << found << " biclusters grown, " << id << " kept" << std::endl;
    return 0;
}
