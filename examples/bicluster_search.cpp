// bicluster_search: the expression biclustering road from one option file. Reads the gene table and
// the expression tables, builds the value space, the condition-variable graph and its weights, runs
// the hash-seeded search with greedy growth, drops overlapping results, and writes bick, bicd and
// bicm.
//
//   bicluster_search <option file>      (see examples/README.md for the scopes and keys)
#include "ArrayVarEC.h"
#include "BicExpScoreAssess.h"
#include "BicGreedyOpt.h"
#include "ExampleExpr.h"
#include "ExpVarGraphACO.h"
#include "HashBiclust.h"
#include "Random.h"
#include "StateDataSetReal.h"
#include "ValSpaceProb.h"
#include "VarUniverse.h"
#include "WgtSchemeGroupIndeg.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "bicluster_search", opts))
        return rc;
    Random::reset(opts.get_int("Random", "Seed", true));

    ValSpaceProb space(opts, "ValSpace", false);
    VarUniverse universe(&space);
    StateDataSetReal data(universe);
    if (!read_expression(opts, universe, data))
        return 1;
    std::cout << universe.size() << " genes, " << data.m_E << " conditions" << std::endl;

    ExpVarGraphACO graph(universe, data, opts, "Graph", true);
    ArrayVarEC classes(data);
    WgtSchemeGroupIndeg wgt(graph, classes, opts, "Weights", opts.get_float("Weights", "ModelP", true), true);
    std::cout << graph.nodes_num() << " nodes, " << graph.edges_num() << " edges" << std::endl;

    BicGreedyOpt opt(graph, wgt, opts, "Greedy", true);
    HashBiclust search(graph, wgt, opt, opts, "Hash");
    search.reduce_bic_set(opts.get_float("Hash", "MaxOverlap", true));
    std::cout << search.m_bics.size() << " biclusters" << std::endl;

    std::ofstream bick(opts.get_str("Tables", "OutBick", true)),
        bicd(opts.get_str("Tables", "OutBicd", true)), bicm(opts.get_str("Tables", "OutBicm", true));
    if (!bick || !bicd || !bicm) {
        std::cerr << "Cannot write the bicluster tables" << std::endl;
        return 1;
    }
    int id = 0;
    for (const ExpVarBiclust& b : search.m_bics) {
        b.dump_to_tables(id, bick, bicd);
        // No motif search on this road: every bicluster has the pattern "none".
        bicm << id << "\tnone\t-1\t-1\n";
        std::cout << "bicluster " << id << ": score " << b.m_score << ", " << b.m_exps.on_bits()
                  << " conditions x " << b.m_vars.on_bits() << " genes" << std::endl;
        ++id;
    }
    bick.close();
    bicd.close();
    bicm.close();

    // Put condition scores on the scale of chance: sampled sums of random gene sets per condition
    // and size, written to Assess::StatTable and Assess::GlobStatTable.
    BicExpScoreAssess assess(graph, wgt, graph.m_var_bits, opts, "Assess");
    std::cout << "assessment tables written to " << opts.get_str("Assess", "StatTable", true) << " and "
              << opts.get_str("Assess", "GlobStatTable", true) << std::endl;
    return 0;
}
