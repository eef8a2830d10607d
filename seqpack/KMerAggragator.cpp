// The k-mer walks over both promoter forms.
#include "KMerAggragator.h"

template class KMerWalk<DnaSequence>;
template class KMerWalk<DnaDenseSequence>;
template class KMerAggragator<DnaSequence>;
template class KMerAggragator<DnaDenseSequence>;
template class KMerCounter<DnaSequence>;
template class KMerCounter<DnaDenseSequence>;
template class KMerRelAggrag<DnaSequence>;
template class KMerRelAggrag<DnaDenseSequence>;
template class KMerRelCounter<DnaSequence>;
template class KMerRelCounter<DnaDenseSequence>;
