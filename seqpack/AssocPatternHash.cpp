// The two instantiations of AssocPatternHash: dense and letter branch.
#include "AssocPatternHash.h"

template class AssocPatternHash<DenseSeqIncrMatch, Dna8MerPattern, DnaDenseSequence>;
template class AssocPatternHash<SeqIncrementMatch, DnaSeqPattern, DnaSequence>;
