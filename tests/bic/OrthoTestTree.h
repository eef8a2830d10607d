// Test fixtures of the species tree: var tables and tree tables written to a temporary folder.
#ifndef VESK_TESTS_BIC_ORTHOTESTTREE_H
#define VESK_TESTS_BIC_ORTHOTESTTREE_H

#include "SpeciesConservTree.h"
#include "SpeciesPhylogeny.h"
#include "TestSupport.h"
#include "options.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// The ids set in a bit vector.
inline std::set<int> ortho_bits(const ds_bitvec& v) {
    std::set<int> s;
    for (int i = 0; i < v.size(); ++i)
        if (v.get_ind(i))
            s.insert(i);
    return s;
}

// A long object table of `n` genes named <prefix><id>, printed name <PREFIX><id>, alias al_<prefix><id>.
inline std::string ortho_var_table(const std::string& prefix, int n) {
    std::ostringstream os;
    for (int i = 0; i < n; ++i)
        os << i << " " << prefix << i << " gene x x " << prefix << "_s" << i << " al_" << prefix << i << "\n";
    return os.str();
}

// Reads a tree table with the traces swallowed.
inline std::unique_ptr<SpeciesPhylogeny> ortho_read_tree(options& opt, const std::string& table) {
    auto tree = std::make_unique<SpeciesPhylogeny>(opt);
    std::istringstream in(table);
    quiet([&] { tree->read_tables(in); });
    return tree;
}

// The hand-worked tree: records out of order, root 2, inner 4, leaves A = 0 (3 genes, with protein
// lengths), B = 3 (2 genes) and C = 1, which maps onto A (kind -1).
//
// Edges: 2 -> (4, 1), 4 -> (3, 0); ranks 2 at the root, 1 at node 4, 0 on the leaves.
struct FiveNodeTree {
    FiveNodeTree() {
        const std::string a = dir.write("A.tab", ortho_var_table("a", 3));
        const std::string b = dir.write("B.tab", ortho_var_table("b", 2));
        const std::string len = dir.write("A.len", "0 120\n2 300\n");
        table = "3 sB 0 " + b + " 4 0 0.5 0.5 x none\n" +
                "4 in4 1 none 2 1 0 0 x none\n"
                "1 sC -1 map 2 0 0 0 x none\n"
                "0 sA 0 " +
                a + " 4 0 0 0 x " + len + "\n" + "2 root 2 none -1 2 0 0 x none\n";
        std::istringstream in(table);
        tree = std::make_unique<SpeciesPhylogeny>(opt);
        trace = quiet([&] { tree->read_tables(in); });
    }
    TempDir dir;
    options opt;
    std::string table;
    std::string trace;
    std::unique_ptr<SpeciesPhylogeny> tree;
};

// Four species A = 0, B = 1, C = 2, D = 3 of six genes each, on ((A, B) 4, (C, D) 5) 6 with ranks
// 1, 2 and 3 at the inner nodes.
struct FourSpeciesTree {
    explicit FourSpeciesTree(int rank5 = 2) {
        std::string table;
        const char* names[] = {"A", "B", "C", "D"};
        for (int s = 0; s < 4; ++s) {
            const std::string f = dir.write(std::string(names[s]) + ".tab", ortho_var_table(names[s], 6));
            table += std::to_string(s) + " " + names[s] + " 0 " + f + " " + (s < 2 ? "4" : "5") +
                     " 0 0 0 x none\n";
        }
        table += "4 ab 1 none 6 1 0 0 x none\n5 cd 1 none 6 " + std::to_string(rank5) +
                 " 0 0 x none\n6 root 1 none -1 3 0 0 x none\n";
        tree = ortho_read_tree(opt, table);
    }
    TempDir dir;
    options opt;
    std::unique_ptr<SpeciesPhylogeny> tree;
};

// A homology record between gene ga of species sa and gene gb of species sb.
struct HomRec {
    int sa, ga, sb, gb;
    float score;
};

// The conservation tree of `tree` on the records, traces swallowed.
inline std::unique_ptr<SpeciesConservTree> ortho_conserv(SpeciesPhylogeny& tree, float thr,
                                                         const std::vector<HomRec>& recs) {
    std::ostringstream table;
    for (const HomRec& r : recs)
        table << r.sa << " " << r.ga << " " << r.sb << " " << r.gb << " " << r.score << "\n";
    testing::internal::CaptureStderr();
    auto c = std::make_unique<SpeciesConservTree>(tree, thr);
    std::istringstream in(table.str());
    c->read_table(in);
    c->recalc();
    testing::internal::GetCapturedStderr();
    return c;
}

// Brute force at an inner node, by species: a record scoring below `thr` whose two species lie on
// different sides (side(s): 0 or 1 below a child, 2 elsewhere) marks both its genes.
template <class Side>
std::vector<std::set<int>> ortho_brute(const std::vector<HomRec>& recs, int species, float thr, Side side) {
    std::vector<std::set<int>> want(species);
    for (const HomRec& r : recs)
        if (r.score < thr && side(r.sa) != side(r.sb)) {
            want[r.sa].insert(r.ga);
            want[r.sb].insert(r.gb);
        }
    return want;
}

// Options from inline text.
inline void ortho_read_options(options& opt, const std::string& text) {
    std::istringstream in(text);
    opt.read(in, false);
}

#endif
