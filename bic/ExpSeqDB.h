// ExpSeqDB: the expression-and-sequence database, the hub that owns the universe, the data sets, the
// promoters, the graphs and their weights, and loads each of them on demand from option keys.
#ifndef VESK_BIC_EXPSEQDB_H
#define VESK_BIC_EXPSEQDB_H

#include "ArrayVarEC.h"
#include "BicSet.h"
#include "BinRelGraphLayers.h"
#include "DnaSeqGenomePromoters.h"
#include "DnaSequence.h"
#include "ExpVarGraphACO.h"
#include "PropVarBiclust.h"
#include "PropVarGraphBase.h"
#include "PropWgtScheme.h"
#include "PssmSet.h"
#include "StateDataSetReal.h"
#include "ValSpaceAutoProb.h"
#include "VarClasses.h"
#include "VarUniverse.h"
#include "WgtSchemeGroupIndeg.h"
#include "ds/BitVec.h"

#include <istream>
#include <memory>
#include <string>
#include <vector>

class options;

// Keys of the database's own scope are read there; file names in the literal scope "Tables"; the
// default values of the three value spaces in "ProbValSpace" (ExpressDefaultVal,
// UseAutomaticDiscretization), "LocaProbValSpace" (LocaDefaultVal) and "PhenoProbValSpace"
// (PhenoDefaultVal); randomisation strengths in "RandomGraph". A scope key of the constructor
// (ValSpaceScope, GraphScope, LocaValSpaceScope, PhenoValSpaceScope) may be absent: the object is
// then built with the scope "Default". Every table that can't be opened is fatal, except the
// optional avoid table.
class ExpSeqDB {
public:
    // Reads the universe from Tables::varob unless `skip_universe` (then it stays empty until
    // full_init_from_matrix) and the avoid table if one is named and can be opened.
    ExpSeqDB(options& opts, const std::string& scope, bool skip_universe);
    ~ExpSeqDB();
    ExpSeqDB(const ExpSeqDB&) = delete;
    ExpSeqDB& operator=(const ExpSeqDB&) = delete;

    // Rows of "ignored id name": those variables are cleared from m_ok_vars.
    void init_avoid_vars(const std::string& path);
    // The expression data by ExprFileType ("key", "txt", else the plain tables), then m_array_ec.
    void init_expression();
    void release_expression();
    void init_sequence(bool dense_too);
    void init_graph();
    void init_lgraph(int randomize);
    void init_bicset();
    void init_pbicset();
    void init_gene_classes();
    void init_pssms();
    void init_br_graph(int randomize);
    void init_location();
    void init_phenotype();
    // A header of row and column counts, then a plain matrix: the universe gets one anonymous gene
    // per row. A header that can't be read ends the process with status 1.
    void full_init_from_matrix(std::istream& in, bool cond_std, bool gene_std, bool gene_std_flag);
    // Lines of "number word" and tab-separated name/value pairs; each line is one table for
    // StateDataSetReal::read_key.
    void read_prop_key(const std::string& path);

    options& m_opts;
    std::string m_scope;
    ValSpaceAutoProb m_val_space;
    VarUniverse m_universe;
    ds_bitvec m_ok_vars;
    StateDataSetReal m_expset;
    std::unique_ptr<ArrayVarEC> m_array_ec;
    DnaSeqGenomePromoters<DnaDenseSequence> m_dense_genome;
    DnaSeqGenomePromoters<DnaSequence> m_genome;
    ExpVarGraphACO m_graph;
    PropVarGraphLayers m_lgraph;
    std::unique_ptr<WgtSchemeGroupIndeg> m_wgt;
    std::unique_ptr<PropWgtSchemeGroupIndeg> m_lwgt;
    std::unique_ptr<BicSet> m_bic_set;
    std::unique_ptr<PBicSet> m_pbic_set;
    std::unique_ptr<VarClasses> m_classes;
    std::unique_ptr<PssmSet> m_pssms;
    std::unique_ptr<BinRelGraphLayers> m_br_graph;
    ValSpaceAutoProb m_loca_space;
    StateDataSetReal m_loca_set;
    ValSpaceAutoProb m_pheno_space;
    StateDataSetReal m_pheno_set;
    // The weights of m_br_graph, and the layer objects of m_lgraph by layer index (null for an
    // absent layer).
    std::unique_ptr<BinRelWgtSchemeDegree> m_br_wgt;
    std::vector<std::unique_ptr<PropVarLayerBase>> m_layers;

private:
    // The value of an optional scope key, or "Default".
    std::string scope_key(const std::string& key);
    // A data set from its key and data tables, with the expression tables' failure texts.
    void read_pair(StateDataSetReal& set, const std::string& data_key, const std::string& key_key,
                   float default_val);
};

#endif
