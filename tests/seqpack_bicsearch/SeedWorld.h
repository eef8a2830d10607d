// Fixture of the seed-to-PSSM tests: the synthetic expression module of the motif search tests
// (genes 0-11 up in conditions 0-3), promoters in which the module's genes carry sites drawn from a
// planted PSSM at recorded positions, a gene set score calculator with flat chance tables, and the
// option text of the scorers.
#ifndef VESK_TESTS_SEQPACK_BICSEARCH_SEEDWORLD_H
#define VESK_TESTS_SEQPACK_BICSEARCH_SEEDWORLD_H

#include "ASAPCalc.h"
#include "BicSynth.h"
#include "DnaPSSM.h"
#include "DnaSeqGenomePromoters.h"
#include "TestSupport.h"

#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

struct SeedWorld {
    enum { kGenes = 60, kConds = 12, kModule = 12 };
    static constexpr const char* kPlanted = "GATTGCC";

    Synth s;
    DnaSeqGenomePromoters<DnaSequence> genome;
    ds_bitvec all;
    std::vector<int> site_pos; // by gene, -1 outside the module

    // Promoters of `len` random letters; a module gene gets a site at a position in [lo, hi), each
    // letter the planted one with chance 0.85, else another.
    SeedWorld(unsigned seed = 9u, int len = 80, int lo = 10, int hi = 60)
        : s(kConds, kGenes, {0, 1, 2, 3}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, 3.0f, seed, true),
          all(kGenes), site_pos(kGenes, -1) {
        std::mt19937 rng(seed);
        genome.m_promoters.resize(kGenes);
        const std::string planted = kPlanted;
        for (int g = 0; g < kGenes; ++g) {
            std::string seq;
            for (int i = 0; i < len; ++i)
                seq.push_back("ACGT"[rng() % 4]);
            if (g < kModule) {
                site_pos[g] = lo + static_cast<int>(rng() % static_cast<unsigned>(hi - lo));
                for (std::size_t i = 0; i < planted.size(); ++i) {
                    char c = planted[i];
                    if (rng() % 100 >= 85) {
                        const std::size_t at = std::string("ACGT").find(c);
                        c = "ACGT"[(at + 1 + rng() % 3) % 4];
                    }
                    seq[site_pos[g] + i] = c;
                }
            }
            set_seq(g, seq);
            all.set_ind(g);
        }
    }
    void set_seq(int g, const std::string& seq) {
        static_cast<std::string&>(genome.m_promoters[g]) = seq;
        genome.m_promoters[g].m_is_empty = false;
        genome.m_promoters[g].m_effective_length = static_cast<int>(seq.size());
    }
    ds_bitvec module() const {
        ds_bitvec m(kGenes);
        for (int g = 0; g < kModule; ++g)
            m.set_ind(g);
        return m;
    }
};

// A calculator in scope "A" (VarGroup 0) with chance tables of mean 0, max 3 and second max 1 at
// every count: a condition counts v / 3 once its margin v exceeds 1.001.
struct FlatAsap {
    explicit FlatAsap(SeedWorld& w, int max_vars = 30)
        : asap(*w.s.graph, *w.s.wgt,
               bic_options("[A]\nVarGroup = 0\nAssessMaxVars = " + std::to_string(max_vars) +
                           "\nNodeMaxScore = 100\nLogit = 0\n"),
               "A", nullptr) {
        std::ostringstream tab;
        for (int node = 0; node < w.s.graph->m_max_exp_node; ++node)
            for (int n = 0; n <= max_vars; ++n)
                tab << node << " " << n << " 0 3 1\n";
        std::istringstream in(tab.str());
        asap.read_score_stat(in);
    }
    ASAPCalc asap;
};

// The scorer's keys in scope "S" and the EM's in scope "EM".
inline std::string pssm_score_text(int min_vars, int max_vars, int use_max = 0) {
    return "[S]\nMinVars = " + std::to_string(min_vars) + "\nMaxVars = " + std::to_string(max_vars) +
           "\nUseMaxCondScore = " + std::to_string(use_max) + "\nLogit = 0\n";
}
inline std::string em_text(float max_entropy, int step, int max_range) {
    std::ostringstream t;
    t << "[EM]\nPriorMultip = { f 4\n0.1 0.2 0.3 0.4\n}\nMaxPosEntropy = " << max_entropy
      << "\nRangeStep = " << step << "\nMaxRange = " << max_range << "\nLogit = 0\n";
    return t.str();
}

#endif
