// The neighbourhood iterator for the dense and the letter pattern.
#include "PatAssocLIDegGap.h"

#include "DnaSeqPattern.h"

template class PatternModification<Dna8MerPattern>;
template class PatternModification<DnaSeqPattern>;
template class PatAssocLIDegGap<Dna8MerPattern>;
template class PatAssocLIDegGap<DnaSeqPattern>;
