// PssmSet: a collection of PSSMs with their consensus texts and bicluster ids, read from a key table
// (pssmk) and a data table (pssmd).
#ifndef VESK_SEQPACK_PSSMSET_H
#define VESK_SEQPACK_PSSMSET_H

#include "DnaPSSM.h"

#include <istream>
#include <ostream>
#include <string>
#include <vector>

class PssmSet {
public:
    // Opens the two files (fatal if either can't be opened) and reads them.
    void read(const std::string& key, const std::string& data, int offset, int have_scores, float prior,
              bool logodds);
    // Ids in both tables are shifted by the number of PSSMs already held. `offset` turns the key's
    // from/to into promoter positions; with `have_scores` the key has bicluster id and score columns;
    // without `logodds` the data are counts, `prior` added to each and the column normalised.
    void read(std::istream& key, std::istream& data, int offset, int have_scores, float prior, bool logodds);
    // Writes nothing: the writer of these tables belongs to the seed-to-PSSM code.
    void write(std::ostream& key, std::ostream& data) const;

    int size() const { return static_cast<int>(m_pssms.size()); }

    std::vector<std::string> m_consensus;
    std::vector<DnaPSSM> m_pssms;
    std::vector<int> m_bic_ids;
};

#endif
