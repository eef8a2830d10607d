// ortho_docs: the comparative road from one option file. Reads a species tree with a gene universe
// per leaf, writes its node table and leaf-pair ancestors, places conserved genes on the tree from a
// homology table, grows domain orthology clusters (docs) from similarity hits, reads them back and
// writes where each arose, which contain which, the docs independent at each node, and optionally
// the same counts under a randomised null model.
//
//   ortho_docs <option file>      (see examples/README.md for the scopes, keys and columns)
#include "DorthoUniverse.h"
#include "ExampleIO.h"
#include "MapDorthoClusts.h"
#include "Random.h"
#include "SpeciesConservTree.h"
#include "SpeciesDorthoGraph.h"
#include "SpeciesPhylogeny.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

bool open_out(std::ofstream& out, const std::string& name) {
    out.open(name);
    if (!out)
        std::cerr << "Cannot write " << name << std::endl;
    return static_cast<bool>(out);
}

std::string join(const std::vector<int>& v) {
    if (v.empty())
        return "-";
    std::string s;
    for (int x : v)
        s += (s.empty() ? "" : ",") + std::to_string(x);
    return s;
}

std::string join(const ds_bitvec& b) {
    std::vector<int> v;
    for (int i = 0; i < b.size(); ++i)
        if (b.get_ind(i))
            v.push_back(i);
    return join(v);
}

void write_tree(const SpeciesPhylogeny& t, std::ostream& os) {
    os << "node\tname\tkind\tparent\tleft\tright\trank\tleaves\tL\tR\tU\n";
    for (int n = 0; n < t.nodes_num(); ++n) {
        const char* kind = t.m_is_inner[n] ? "inner" : t.m_univ_map[n] != -1 ? "mapped" : "leaf";
        os << n << "\t" << (t.m_node_name[n].empty() ? "-" : t.m_node_name[n]) << "\t" << kind << "\t"
           << t.m_parent[n] << "\t" << t.m_left[n] << "\t" << t.m_right[n] << "\t" << t.m_node_rank[n] << "\t"
           << join(t.m_leaves[n]) << "\t" << join(t.m_l_set[n]) << "\t" << join(t.m_r_set[n]) << "\t"
           << join(t.m_u_set[n]) << "\n";
    }
}

void write_lca(const SpeciesPhylogeny& t, std::ostream& os) {
    os << "a\tb\tlca\n";
    std::vector<int> leaves;
    for (int n = 0; n < t.nodes_num(); ++n)
        if (t.is_species(n))
            leaves.push_back(n);
    for (std::size_t i = 0; i < leaves.size(); ++i)
        for (std::size_t j = i; j < leaves.size(); ++j)
            os << leaves[i] << "\t" << leaves[j] << "\t" << t.m_lca[leaves[i]][leaves[j]] << "\n";
}

void write_conserv(const SpeciesPhylogeny& t, const SpeciesConservTree& c, std::ostream& os) {
    os << "node\tspecies\tgene\n";
    for (int n = 0; n < t.nodes_num(); ++n)
        for (int s = 0; s < t.nodes_num(); ++s)
            for (int g = 0; g < c.m_conserv[n][s].size(); ++g)
                if (c.m_conserv[n][s].get_ind(g))
                    os << n << "\t" << s << "\t" << g << "\n";
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "ortho_docs", opts))
        return rc;

    SpeciesPhylogeny tree(opts);
    {
        std::ifstream in;
        if (!open_in(in, opts.get_str("Tables", "Tree", true)))
            return 1;
        tree.read_tables(in);
    }
    {
        std::ofstream out_tree, out_lca;
        if (!open_out(out_tree, opts.get_str("Tables", "OutTree", true)) ||
            !open_out(out_lca, opts.get_str("Tables", "OutLca", true)))
            return 1;
        write_tree(tree, out_tree);
        write_lca(tree, out_lca);
    }
    std::cout << tree.nodes_num() << " tree nodes, root " << tree.m_root << std::endl;

    const std::string homology = opts.get_str("Tables", "Homology", false);
    if (!homology.empty()) {
        SpeciesConservTree conserv(tree, opts.get_float("Conserv", "Threshold", true));
        std::ifstream in;
        std::ofstream out;
        if (!open_in(in, homology) || !open_out(out, opts.get_str("Tables", "OutConserv", true)))
            return 1;
        conserv.read_table(in);
        conserv.recalc();
        write_conserv(tree, conserv, out);
        std::cout << "conserved genes written" << std::endl;
    }

    const std::string hits = opts.get_str("Tables", "Hits", false);
    const std::string hit_dir = opts.get_str("Tables", "HitDir", false);
    if (hits.empty() && hit_dir.empty())
        return 0;

    SpeciesDorthoGraph graph(tree, opts.get_float("Docs", "ScoreBound", true),
                             opts.get_int("Docs", "DomainSlack", true));
    if (!hits.empty()) {
        std::ifstream in;
        if (!open_in(in, hits))
            return 1;
        graph.read_table(in);
    }
    if (!hit_dir.empty())
        graph.read_blast_dir(hit_dir);

    const std::string docs_file = opts.get_str("Tables", "OutDocs", true);
    {
        std::ofstream out;
        if (!open_out(out, docs_file))
            return 1;
        const std::string gen = opts.get_str("Docs", "Generator", true);
        if (gen == "edges") {
            MapDorthoClusts m(graph, opts, "Docs");
            m.calc();
            m.dump_table(out);
        } else if (gen == "hdocs") {
            MapHDocs m(graph, opts, "Docs");
            m.calc();
            m.dump_table(out);
        } else {
            std::cerr << "Unknown Docs::Generator " << gen << " (edges or hdocs)" << std::endl;
            return 1;
        }
    }

    DorthoUniverse univ(tree, opts, "Docs");
    {
        std::ifstream in;
        if (!open_in(in, docs_file))
            return 1;
        univ.read_tab(in);
    }
    univ.analyze();
    std::cout << univ.m_docs.size() << " docs" << std::endl;
    {
        std::ofstream out_doc_tree, out_indep;
        if (!open_out(out_doc_tree, opts.get_str("Tables", "OutDocTree", true)) ||
            !open_out(out_indep, opts.get_str("Tables", "OutIndep", true)))
            return 1;
        out_doc_tree << "doc\tlca\tancestor\tsub_docs\tsuper_docs\n";
        for (std::size_t d = 0; d < univ.m_docs.size(); ++d) {
            univ.m_docs[d].compute_ancestral_presence();
            out_doc_tree << d << "\t" << univ.m_doc_lca[d] << "\t" << univ.m_docs[d].m_ancestor << "\t"
                         << join(univ.m_sub_docs[d]) << "\t" << join(univ.m_super_docs[d]) << "\n";
        }
        out_indep << "node\tcount\tdocs\n";
        for (int n = 0; n < tree.nodes_num(); ++n)
            out_indep << n << "\t" << univ.m_indep_docs[n].size() << "\t" << join(univ.m_indep_docs[n])
                      << "\n";
    }

    const int null_runs = opts.get_int("Docs", "NullRuns", false);
    if (null_runs > 0) {
        Random::reset(opts.get_int("Random", "Seed", true));
        std::ofstream out;
        if (!open_out(out, opts.get_str("Tables", "OutNull", true)))
            return 1;
        out << "run\tnode\tcount\n";
        for (int run = 0; run < null_runs; ++run) {
            univ.randomize();
            univ.analyze();
            for (int n = 0; n < tree.nodes_num(); ++n)
                out << run << "\t" << n << "\t" << univ.m_indep_docs[n].size() << "\n";
        }
        std::cout << null_runs << " null runs written" << std::endl;
    }
    return 0;
}
