// Fixture of the motif search tests: a synthetic expression graph with a planted module (genes 0-11
// up in conditions 0-3) and promoters in which the module's genes hold TGACTCA.
#ifndef VESK_TESTS_SEQPACK_BICSEARCH_MOTIFWORLD_H
#define VESK_TESTS_SEQPACK_BICSEARCH_MOTIFWORLD_H

#include "AssocPatternHash.h"
#include "BicSynth.h"

#include <random>
#include <sstream>

struct MotifWorld {
    enum { kGenes = 60, kConds = 12, kLen = 80 };
    Synth s;
    DnaSeqGenomePromoters<DnaSequence> letters;
    DnaSeqGenomePromoters<DnaDenseSequence> dense;
    ds_bitvec all;
    KMerAggragator<DnaSequence> index;

    explicit MotifWorld(unsigned seed = 9u)
        : s(kConds, kGenes, {0, 1, 2, 3}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}, 3.0f, seed, true),
          all(kGenes), index(s.universe, letters) {
        std::mt19937 rng(seed);
        letters.m_promoters.resize(kGenes);
        dense.m_promoters.resize(kGenes);
        for (int g = 0; g < kGenes; ++g) {
            std::string seq;
            for (int i = 0; i < kLen; ++i)
                seq.push_back("ACGT"[rng() % 4]);
            if (g < 12)
                seq.replace(10 + rng() % 50, 7, "TGACTCA");
            static_cast<std::string&>(letters.m_promoters[g]) = seq;
            letters.m_promoters[g].m_is_empty = false;
            std::istringstream in(seq + "\n");
            dense.m_promoters[g].DnaDenseSequence::read_fasta(in);
            dense.m_promoters[g].m_is_empty = false;
            all.set_ind(g);
        }
        index.init(6, 2, 0, 0, all, 0, -1);
    }
};

#endif
