// BicSetPatOverlapReduce: reduces a bicluster set with patterns by merging windows of one pattern and
// dropping the weaker of two biclusters that share most of their indispensable genes and conditions.
#ifndef VESK_SEQPACK_BICSEARCH_BICSETPATOVERLAPREDUCE_H
#define VESK_SEQPACK_BICSEARCH_BICSETPATOVERLAPREDUCE_H

#include "BicAssocPatScore.h"
#include "ExpSeqDB.h"
#include "ds/BitVec.h"

#include <memory>
#include <ostream>
#include <string>
#include <vector>

class options;

// Keys in `scope`: PatScore (the scope of the gene set score), VarGroup (int), both required; the
// score's chance tables from Tables::score_tab and Tables::glob_score_tab. Works on the database's
// bicluster set, which must be loaded.
class BicSetPatOverlapReduce {
public:
    BicSetPatOverlapReduce(ExpSeqDB& db, options& opts, const std::string& scope);

    // Merges, marks hot genes, drops overlapping pairs (overlap above `thresh` of the smaller set in
    // both hot genes and conditions) and writes the survivors to `bick`, `bicd`.
    void reduce_bic_set(float thresh, std::ostream& bick, std::ostream& bicd);
    // Biclusters of one pattern whose windows overlap or touch become one: the first of them takes
    // the union of the windows, genes and conditions; the others are made inactive. Windows are
    // half-open [from, to) and a `to` of -1 is the promoter's end, so [0, 40) and [40, 80) touch.
    void unify_on_range();
    // For each active bicluster, the genes whose removal strictly lowers its score.
    void find_hot_genes();

    ExpSeqDB& m_db;
    std::unique_ptr<BicAssocPatScore> m_score;
    int m_var_group;
    std::vector<ds_bitvec> m_hot; // by bicluster id, gene ids
};

#endif
