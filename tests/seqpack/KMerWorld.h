// Random promoter sets over a universe of anonymous genes, shared by the k-mer tests.
#ifndef VESK_TESTS_SEQPACK_KMERWORLD_H
#define VESK_TESTS_SEQPACK_KMERWORLD_H

#include "DnaSeqGenomePromoters.h"
#include "TestSupport.h"
#include "VarUniverse.h"

#include <algorithm>
#include <random>
#include <sstream>

// A universe of n genes and random letter promoters: some genes without a promoter, some short ones,
// some padded with NUL in front, a few N, a and NUL among A, C, G, T.
struct KmerWorld {
    VarUniverse univ;
    DnaSeqGenomePromoters<DnaSequence> genome;
    ds_bitvec genes;

    KmerWorld(int n, std::uint32_t seed) : genes(n) {
        std::ostringstream tab;
        for (int i = 0; i < n; ++i)
            tab << i << " G" << i << " g" << i << "\n";
        std::istringstream tin(tab.str());
        quiet([&] { univ.read_short_tabs(tin); });
        std::mt19937 rng(seed);
        genome.m_promoters.resize(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i) {
            DnaSeqPromoter<DnaSequence>& p = genome.m_promoters[i];
            if (rng() % 7 == 0)
                continue; // no promoter
            const int len = rng() % 9 == 0 ? static_cast<int>(rng() % 6) : 20 + static_cast<int>(rng() % 25);
            for (int j = 0; j < len; ++j) {
                const unsigned r = rng() % 40;
                p.push_back(r < 2 ? 'N' : r == 2 ? 'a' : r == 3 ? '\0' : "ACGT"[r % 4]);
            }
            if (rng() % 5 == 0)
                p.replace(0, std::min<std::size_t>(p.size(), 1 + rng() % 6), 1 + rng() % 6, '\0');
            p.m_is_empty = false;
            p.m_gene_var_id = i;
            if (rng() % 4 != 0)
                genes.set_ind(i);
        }
    }
};

#endif
