// The hand-built graph of the assessment and gene set score tests: two orientations on both sides,
// weights in quarters so that every sum is exact in float.
#ifndef VESK_TESTS_BIC_ASSESSFIXTURE_H
#define VESK_TESTS_BIC_ASSESSFIXTURE_H

#include "BicSynth.h"

#include <memory>

// Conditions c0, c1, c2; genes 0-4.
// Condition nodes: 0 (c0, group 0), 1 (c1, 0), 2 (c2, 0), 3 (c0, 1), 4 (c1, 1).
// Variable nodes: 5-8 genes 0-3 in group 0, 9 and 10 genes 0 and 1 in group 1; gene 4 has no node.
// Bins: nodes 5, 6 bin 0; 7, 8 bin 1; 9, 10 bin 2.
// Non-edge weights [bin][condition node]:
//   bin 0: -0.5 -0.25 -0.5 -0.25 -0.5
//   bin 1: -0.25 -0.5 -0.5 -0.5 -0.25
//   bin 2: -0.5 -0.5 -0.5 -0.25 -0.25
// Edges (weight): 0-5 (2), 0-6 (1.5), 1-7 (1), 3-9 (2.5), 4-8 (1.25), 1-10 (1.75), 0-9 (2.5).
// Node 2 (c2) has no edge and -0.5 to everything: its sums are the same in every sample.
struct AssessHand : HandFix {
    AssessHand()
        : HandFix(5, 3, {0, 0, 0, 1, 1}, {0, 0, 0, 0, 1, 1},
                  edges_of("0-5:2 0-6:1.5 1-7 3-9:2.5 4-8:1.25 1-10:1.75 0-9:2.5"), 2,
                  {0, 0, 0, 0, 0, 0, 0, 1, 1, 2, 2}, 3) {
        w->m_non_edge = {{-0.5f, -0.25f, -0.5f, -0.25f, -0.5f},
                         {-0.25f, -0.5f, -0.5f, -0.5f, -0.25f},
                         {-0.5f, -0.5f, -0.5f, -0.25f, -0.25f}};
        w->m_edge = {{1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}};
        pairs.reset(new PairTable(*g, *w));
    }
    std::unique_ptr<PairTable> pairs;
};

inline ds_bitvec gene_set(const std::vector<int>& genes, int width = 5) { return id_set(genes, width); }

// An assessment scope: samples per condition and global, the largest set, the gene groups, the tables.
inline std::string assess_text(const std::string& scope, int samp, int glob, int max_vars,
                               const std::string& groups, const std::string& stat = "",
                               const std::string& glob_path = "") {
    std::string t = "[" + scope + "]\nNumAssessSamp = " + std::to_string(samp) +
                    "\nNumGlobAssessSamp = " + std::to_string(glob) +
                    "\nAssessMaxVars = " + std::to_string(max_vars) + "\nExpGroupForTypic = 0\nLogit = 0\n";
    if (!groups.empty())
        t += "GeneGroups = { i 2\n" + groups + "\n}\n";
    if (!stat.empty())
        t += "StatTable = " + stat + "\nGlobStatTable = " + glob_path + "\n";
    return t;
}

#endif
