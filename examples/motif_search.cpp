// motif_search: which degenerate pattern marks genes that behave alike? Builds the expression graph
// as bicluster_search does, reads the promoters in letter and dense form, indexes their k-mers, and
// from each seed pattern runs the tabu search whose score rates the matched genes as a bicluster.
// Writes one line per seed and one bicluster per seed (bick, bicd, bicm).
//
//   motif_search <option file>      (see examples/README.md for the scopes and keys)
#include "ArrayVarEC.h"
#include "BicExpScoreAssess.h"
#include "BicMotifTaboo.h"
#include "BicSet.h"
#include "ExampleExpr.h"
#include "ExpVarGraphACO.h"
#include "Random.h"
#include "StateDataSetReal.h"
#include "ValSpaceProb.h"
#include "VarUniverse.h"
#include "WgtSchemeGroupIndeg.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Seed {
    std::string text;
    int from;
    int to;
};
} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "motif_search", opts))
        return rc;
    Random::reset(opts.get_int("Random", "Seed", true));

    ValSpaceProb space(opts, "ValSpace", false);
    VarUniverse universe(&space);
    StateDataSetReal data(universe);
    if (!read_expression(opts, universe, data))
        return 1;
    ExpVarGraphACO graph(universe, data, opts, "Graph", true);
    ArrayVarEC classes(data);
    WgtSchemeGroupIndeg wgt(graph, classes, opts, "Weights", opts.get_float("Weights", "ModelP", true), true);

    // The promoters, as letters and packed (the packed table always by the short names).
    const std::string fasta = opts.get_str("Tables", "Promoters", true);
    const int length = opts.get_int("Tables", "PromoterLength", true);
    const bool orf2 = opts.get_int("Tables", "UseOrf2ForFasta", true) != 0;
    DnaSeqGenomePromoters<DnaSequence> letters;
    DnaSeqGenomePromoters<DnaDenseSequence> dense;
    {
        std::ifstream in;
        if (!open_in(in, fasta))
            return 1;
        std::cerr << "will read " << fasta << std::endl;
        letters.read_fasta(length, universe, in, orf2, false);
        std::ifstream again(fasta);
        dense.read_fasta(length, universe, again, false, false);
        std::cerr << "done read dense genome" << std::endl;
    }
    ds_bitvec with_promoter(universe.size());
    for (int g = 0; g < universe.size(); ++g)
        if (!letters.get_promoter(g).is_empty() && !dense.get_promoter(g).is_empty())
            with_promoter.set_ind(g);
    const int k = opts.get_int("Index", "K", true);
    KMerAggragator<DnaSequence> index(universe, letters);
    index.init(k, opts.get_int("Index", "MaxDeg", false), 0, 0, with_promoter, 0, -1);
    AssocPatternHashDense assoc(dense, index, with_promoter, k);
    assoc.m_trace = false;

    // Asked before the search reads the key (reading an absent key enters it empty).
    const bool have_tables = opts.has_option("Tables", "score_tab");
    BicMotifTaboo taboo(graph, wgt, assoc, opts, "Motif");
    if (!have_tables) {
        BicExpScoreAssess assess(graph, wgt, graph.m_var_bits, opts, "Assess");
        taboo.m_score.init_from_assess(assess);
    }

    std::vector<Seed> seeds;
    if (std::vector<std::string>* list = opts.get_strs("Motif", "Seeds", false))
        for (const std::string& s : *list)
            seeds.push_back({s, 0, -1});
    const std::string in_bick = opts.get_str("Tables", "InBick", false);
    if (!in_bick.empty()) {
        BicSet in_set(graph, wgt);
        if (!in_set.read(in_bick, opts.get_str("Tables", "InBicd", true)) ||
            !in_set.read_bicm(opts.get_str("Tables", "InBicm", true)))
            return 1;
        for (std::size_t i = 0; i < in_set.m_patterns.size(); ++i)
            if (in_set.m_patterns[i] != "none")
                seeds.push_back({in_set.m_patterns[i], in_set.m_pat_from[i], in_set.m_pat_to[i]});
    }

    std::ofstream motifs(opts.get_str("Tables", "OutMotifs", true));
    const std::string bick_name = opts.get_str("Tables", "OutBick", true),
                      bicd_name = opts.get_str("Tables", "OutBicd", true),
                      bicm_name = opts.get_str("Tables", "OutBicm", true);
    if (!motifs) {
        std::cerr << "Cannot write " << opts.get_str("Tables", "OutMotifs", true) << std::endl;
        return 1;
    }
    motifs << "seed\tpattern\tfrom\tto\tscore\tgenes\tconds\n";
    const int var_group = taboo.m_score.m_var_group;
    BicSet out_set(graph, wgt);
    for (std::size_t i = 0; i < seeds.size(); ++i) {
        Dna8MerPattern p;
        p.init_str(seeds[i].text);
        p.m_from_range = seeds[i].from < 0 ? 0 : seeds[i].from;
        p.m_to_range = seeds[i].to;
        assoc.match(p);
        taboo.optimize();
        const Dna8MerPattern& best = taboo.m_best_pattern;
        const bool window = best.m_to_range != -1 || best.m_from_range != 0;
        const int from = window ? best.m_from_range : -1, to = window ? best.m_to_range : -1;
        motifs << seeds[i].text << "\t" << best.get_str() << "\t" << from << "\t" << to << "\t"
               << taboo.m_best_score << "\t" << taboo.m_best_genes.on_bits() << "\t";
        std::vector<int> groups;
        for (std::size_t c = 0; c < taboo.m_best_conds.size(); ++c) {
            motifs << (c ? "," : "") << taboo.m_best_conds[c];
            groups.push_back(graph.node_group(taboo.m_best_groups[c]));
        }
        motifs << (taboo.m_best_conds.empty() ? "-" : "") << "\n";
        out_set.replace_bic(static_cast<int>(i), taboo.m_best_conds, groups, taboo.m_best_genes, var_group,
                            best.get_str(), from, to);
        std::cout << "seed " << seeds[i].text << ": " << best.get_str() << " score " << taboo.m_best_score
                  << ", " << taboo.m_best_genes.on_bits() << " genes, " << taboo.m_best_conds.size()
                  << " conditions" << std::endl;
    }
    {
        std::ofstream bick(bick_name), bicd(bicd_name), bicm(bicm_name);
        if (!bick || !bicd || !bicm) {
            std::cerr << "Cannot write the bicluster tables" << std::endl;
            return 1;
        }
        for (int id = 0; id < out_set.size(); ++id) {
            out_set.m_bics[static_cast<std::size_t>(id)].dump_to_tables(id, bick, bicd);
            bicm << id << "\t" << out_set.m_patterns[static_cast<std::size_t>(id)] << "\t"
                 << out_set.m_pat_from[static_cast<std::size_t>(id)] << "\t"
                 << out_set.m_pat_to[static_cast<std::size_t>(id)] << "\n";
        }
    }
    // The tables read back against the same graph.
    BicSet back(graph, wgt);
    if (!back.read(bick_name, bicd_name) || !back.read_bicm(bicm_name))
        return 1;
    std::cout << back.size() << " biclusters read back" << std::endl;
    return 0;
}
