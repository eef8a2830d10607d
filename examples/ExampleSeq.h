// The sequence layer of the k-mer and PSSM programs: the gene table and the promoters in letters.
#ifndef VESK_EXAMPLES_EXAMPLESEQ_H
#define VESK_EXAMPLES_EXAMPLESEQ_H

#include "DnaSeqGenomePromoters.h"
#include "ExampleIO.h"
#include "VarUniverse.h"

// Reads Tables::GeneTab into the universe and Tables::Promoters (PromoterLength long, by the second
// names with UseOrf2ForFasta) into `genome`; false (having said which) when a table can't be opened.
template <class S>
bool read_genes_and_promoters(options& opts, VarUniverse& universe, DnaSeqGenomePromoters<S>& genome) {
    std::ifstream genes, fasta;
    if (!open_in(genes, opts.get_str("Tables", "GeneTab", true)) ||
        !open_in(fasta, opts.get_str("Tables", "Promoters", true)))
        return false;
    universe.read_short_tabs(genes);
    const int length = opts.get_int("Tables", "PromoterLength", true);
    const bool use_orf2 = opts.get_int("Tables", "UseOrf2ForFasta", true) != 0;
    genome.read_fasta(length, universe, fasta, use_orf2, false);
    return true;
}

#endif
