// ExpSeqDB: construction in its fixed order and the on-demand loaders of every part of the database.
#include "ExpSeqDB.h"

#include "PropVarLayers.h"
#include "error.h"
#include "options.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>

static constexpr char kSrc[] = "ExpSeqDB";

namespace {
const char kTables[] = "Tables";

// Defer reading a value space's keys when its scope is the stand-in "Default".
bool is_default(const std::string& scope) { return scope == "Default"; }
} // namespace

std::string ExpSeqDB::scope_key(const std::string& key) {
    if (!m_opts.has_option(m_scope, key))
        return "Default";
    return m_opts.get_str(m_scope, key, true);
}

ExpSeqDB::ExpSeqDB(options& opts, const std::string& scope, bool skip_universe)
    : m_opts(opts), m_scope(scope),
      m_val_space(opts, scope_key("ValSpaceScope"), is_default(scope_key("ValSpaceScope"))),
      m_universe(&m_val_space), m_ok_vars(0), m_expset(m_universe),
      m_graph(m_universe, m_expset, opts, scope_key("GraphScope"), false),
      m_lgraph(m_universe, opts, scope_key("GraphScope")),
      m_loca_space(opts, scope_key("LocaValSpaceScope"), is_default(scope_key("LocaValSpaceScope"))),
      m_loca_set(m_universe),
      m_pheno_space(opts, scope_key("PhenoValSpaceScope"), is_default(scope_key("PhenoValSpaceScope"))),
      m_pheno_set(m_universe) {
    if (!skip_universe) {
        // The universe reader takes two streams of the same table.
        const std::string path = opts.get_str(kTables, "varob", true);
        std::ifstream objects(path), again(path);
        if (!objects || !again)
            VESK_FATAL(kSrc, "cannot open varob table " << path);
        m_universe.read_tabs(objects, again);
        std::cerr << "univ inited" << std::endl;
    }
    if (opts.has_option(kTables, "avoid_vars")) {
        const std::string path = opts.get_str(kTables, "avoid_vars", true);
        std::ifstream test(path);
        if (test) {
            test.close();
            init_avoid_vars(path);
            return;
        }
        std::cerr << "scpope is " << m_scope << std::endl;
    }
    m_ok_vars.set_size(m_universe.size());
    m_ok_vars.set(true);
}

ExpSeqDB::~ExpSeqDB() {
    // The graph holds the layer objects by plain pointer.
    m_lgraph.m_layers.clear();
}

void ExpSeqDB::init_avoid_vars(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        VESK_FATAL(kSrc, "cannot open avoid vars table " << path);
    m_ok_vars.set_size(m_universe.size());
    m_ok_vars.set(true);
    int ignored = 0, id = 0;
    std::string name;
    while (in >> ignored >> id >> name) {
        std::cerr << "avoid " << id << " name " << name << std::endl;
        if (id >= 0 && id < m_ok_vars.size())
            m_ok_vars.clr_ind(id);
    }
}

void ExpSeqDB::read_pair(StateDataSetReal& set, const std::string& data_key, const std::string& key_key,
                         float default_val) {
    const std::string data_path = m_opts.get_str(kTables, data_key, true);
    std::ifstream data(data_path);
    if (!data)
        VESK_FATAL(kSrc, "cannot open expd table " << data_path);
    const std::string key_path = m_opts.get_str(kTables, key_key, true);
    std::ifstream key(key_path);
    if (!key)
        VESK_FATAL(kSrc, "cannot open expk_tab table " << key_path);
    set.read(key, data, default_val);
}

void ExpSeqDB::init_expression() {
    const bool typed = m_opts.has_option(kTables, "ExprFileType");
    const std::string type = typed ? m_opts.get_str(kTables, "ExprFileType", true) : "";
    if (type == "key") {
        read_prop_key(m_opts.get_str(kTables, "ExprTxtFile", true));
    } else if (type == "txt") {
        std::map<std::string, std::string> params;
        params["file"] = m_opts.get_str(kTables, "ExprTxtFile", true);
        params["key_col"] = m_opts.get_str(kTables, "ExprTxtFileKeyCol", true);
        params["first_data_col"] = m_opts.get_str(kTables, "ExprTxtFileDataCol", true);
        params["one_array_type"] = m_opts.get_str(kTables, "ForceOneArrayType", true);
        m_expset.read_txt(params);
    } else {
        const float default_val = m_opts.get_float("ProbValSpace", "ExpressDefaultVal", true);
        if (m_opts.get_int(kTables, "HaveArraySetTables", true) == 0) {
            read_pair(m_expset, "expr", "expk", default_val);
            // Fitting the value space to the data is done on this path only, with one table pair.
            if (m_opts.get_int("ProbValSpace", "UseAutomaticDiscretization", true) != 0)
                m_val_space.reinit_auto(m_expset);
        } else {
            const std::string expd_path = m_opts.get_str(kTables, "expr", true);
            std::ifstream expd(expd_path);
            if (!expd)
                VESK_FATAL(kSrc, "cannot open expd table " << expd_path);
            const std::string expk_path = m_opts.get_str(kTables, "expk", true);
            std::ifstream expk(expk_path);
            if (!expk)
                VESK_FATAL(kSrc, "cannot open expk_tab table " << expk_path);
            const std::string arrk_path = m_opts.get_str(kTables, "arrk", true);
            std::ifstream arrk(arrk_path);
            if (!arrk)
                VESK_FATAL(kSrc, "cannot open arrk_tab table " << arrk_path);
            const std::string arrd_path = m_opts.get_str(kTables, "arrd", true);
            std::ifstream arrd(arrd_path);
            if (!arrd)
                VESK_FATAL(kSrc, "cannot open arrd_tab table " << arrd_path);
            m_expset.read_multi(expk, expd, arrk, arrd, default_val);
        }
    }
    m_array_ec.reset(new ArrayVarEC(m_expset));
}

void ExpSeqDB::release_expression() {
    std::cerr << "will release expset" << std::endl;
    m_expset.reset();
    std::cerr << "done release expset" << std::endl;
}

void ExpSeqDB::read_prop_key(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        VESK_FATAL(kSrc, "cannot open gekey file " << path);
    int number = 0;
    std::string word;
    while (in >> number >> word) {
        std::map<std::string, std::string> params;
        int c = in.get();
        while (c == '\r')
            c = in.get();
        if (c == '\n' || c == EOF)
            VESK_FATAL(kSrc, "no params at property key table line " << number);
        // A tab switches between a name and a value; a tab or the line end after a value stores the
        // pair, so that a trailing tab loses nothing.
        std::string name, value;
        bool in_value = false;
        auto store = [&]() {
            std::cerr << "nm " << name << " is " << value << std::endl;
            params[name] = value;
            name.clear();
            value.clear();
        };
        for (c = in.get(); c != EOF && c != '\n'; c = in.get()) {
            if (c == '\r')
                continue;
            if (c == '\t') {
                if (in_value)
                    store();
                in_value = !in_value;
            } else {
                (in_value ? value : name).push_back(static_cast<char>(c));
            }
        }
        if (in_value)
            store();
        const std::string file = params.count("file") ? params["file"] : "";
        std::cerr << "will read, file is " << file << std::endl;
        m_expset.read_key(word, params, number);
    }
}

void ExpSeqDB::init_sequence(bool dense_too) {
    const std::string path = m_opts.get_str(kTables, "Promoters", true);
    const int length = m_opts.get_int(kTables, "PromoterLength", true);
    const bool orf2 = m_opts.get_int(kTables, "UseOrf2ForFasta", true) != 0;
    std::ifstream in(path);
    if (!in)
        VESK_FATAL(kSrc, "cannot open promoters " << path);
    std::cerr << "will read " << path << std::endl;
    m_genome.read_fasta(length, m_universe, in, orf2, false);
    std::cerr << "done read dense genome" << std::endl;
    if (dense_too) {
        std::ifstream again(path);
        m_dense_genome.read_fasta(length, m_universe, again, false, false);
    }
}

void ExpSeqDB::init_graph() {
    if (!m_array_ec)
        VESK_FATAL(kSrc, "Cannot call init_Graph before init_expression");
    const std::string scope = m_opts.get_str(m_scope, "GraphScope", true);
    const int cond_orient = m_opts.get_int(scope, "AllowConditionOrientation", true);
    // Both variable orientations, always; the key is read and not used.
    m_graph.init(m_opts, scope, cond_orient != 0, true);
    m_opts.get_int(scope, "AllowVarOrientation", true);
    std::cerr << "DB max exp node of graph is " << m_graph.m_max_exp_node << std::endl;
    m_wgt.reset(new WgtSchemeGroupIndeg(m_graph, *m_array_ec, m_opts,
                                        m_opts.get_str(m_scope, "WgtCalcScope", true),
                                        m_opts.get_float(m_scope, "PU", true), true));
}

void ExpSeqDB::init_lgraph(int randomize) {
    if (!m_array_ec)
        VESK_FATAL(kSrc, "Cannot call init_lgraph before init_expression");
    static const char* const kUse[] = {"UseExprLayer", "UsePssmLayer", "UseAnnotLayer", "UseLocaLayer",
                                       "UsePhenoLayer"};
    for (int layer = 0; layer < 5; ++layer) {
        if (m_opts.get_int(m_scope, kUse[layer], false) != 1)
            continue;
        PropVarLayerBase* made = nullptr;
        switch (layer) {
        case 0:
            made = new PropVarLayerACO(m_expset, m_opts, m_opts.get_str(m_scope, "GraphScope", true));
            break;
        case 1:
            if (!m_pssms)
                VESK_FATAL(kSrc, "Cannot build the PSSM layer before init_pssms");
            made = new PropVarLayerPSSM(*m_pssms, m_genome, m_opts,
                                        m_opts.get_str(m_scope, "PSSMLayerScope", true));
            break;
        case 2:
            if (!m_classes)
                VESK_FATAL(kSrc, "Cannot build the annotation layer before init_gene_classes");
            made =
                new PropVarLayerAnnot(*m_classes, m_opts, m_opts.get_str(m_scope, "AnnotsLayerScope", true));
            break;
        case 3:
            made = new PropVarLayerACO(m_loca_set, m_opts, m_opts.get_str(m_scope, "LocaGraphScope", true));
            break;
        default:
            made = new PropVarLayerACO(m_pheno_set, m_opts, m_opts.get_str(m_scope, "PhenoGraphScope", true));
            break;
        }
        if (static_cast<int>(m_layers.size()) <= layer)
            m_layers.resize(layer + 1);
        m_layers[layer].reset(made);
    }
    m_lgraph.m_layers.assign(m_layers.size(), nullptr);
    for (std::size_t l = 0; l < m_layers.size(); ++l)
        m_lgraph.m_layers[l] = m_layers[l].get();
    m_lgraph.build_layers();
    if (randomize != 0)
        m_lgraph.randomize(m_opts.get_int("RandomGraph", "RandFactor", true),
                           *m_opts.get_floats("RandomGraph", "ProbRanges", true));
    m_lwgt.reset(new PropWgtSchemeGroupIndeg(m_lgraph, *m_array_ec, m_opts,
                                             m_opts.get_str(m_scope, "WgtCalcScope", true), true));
}

void ExpSeqDB::init_bicset() {
    if (!m_wgt)
        VESK_FATAL(kSrc, "Cannot call init_bicset before init_graph");
    m_bic_set.reset(new BicSet(m_graph, *m_wgt));
    const std::string bicd = m_opts.get_str(kTables, "bicd", true);
    const std::string bick = m_opts.get_str(kTables, "bick", true);
    m_bic_set->read(bick, bicd);
    m_bic_set->read_bicm(m_opts.get_str(kTables, "bicm", true));
}

void ExpSeqDB::init_pbicset() {
    if (!m_lwgt)
        VESK_FATAL(kSrc, "Cannot call init_pbicset before init_lgraph");
    m_pbic_set.reset(new PBicSet(m_lgraph, *m_lwgt));
    const std::string bicd = m_opts.get_str(kTables, "bicd", true);
    const std::string bick = m_opts.get_str(kTables, "bick", true);
    m_pbic_set->read(bick, bicd);
}

void ExpSeqDB::init_gene_classes() {
    m_classes.reset(new VarClasses);
    m_classes->read(m_opts.get_str(kTables, "goclskey", true), m_opts.get_str(kTables, "clsassoc", true),
                    m_universe.size(), &m_ok_vars);
}

void ExpSeqDB::init_pssms() {
    m_pssms.reset(new PssmSet);
    m_pssms->read(m_opts.get_str(kTables, "pssm_key", true), m_opts.get_str(kTables, "pssm_data", true),
                  m_opts.get_int(kTables, "pssm_max_range", true), 0, 0.025f, false);
}

void ExpSeqDB::init_br_graph(int randomize) {
    m_br_graph.reset(new BinRelGraphLayers);
    const std::string key_path = m_opts.get_str(kTables, "layer_key", true);
    std::ifstream key(key_path);
    if (!key)
        VESK_FATAL(kSrc, "cannot open bin relation layer key table " << key_path);
    const std::string rels_path = m_opts.get_str(kTables, "br_rels", true);
    std::ifstream rels(rels_path);
    if (!rels)
        VESK_FATAL(kSrc, "cannot open bin relation table " << rels_path);
    m_br_graph->read_tables(key, rels, m_universe.size());
    if (randomize != 0)
        m_br_graph->randomize(m_opts.get_int("RandomGraph", "BRRandFactor", true));
    // The degree scheme has no keys of its own; its scope is still named.
    m_opts.get_str(m_scope, "BinRelWgtCalcScope", true);
    m_br_wgt.reset(new BinRelWgtSchemeDegree(*m_br_graph));
}

void ExpSeqDB::init_location() {
    read_pair(m_loca_set, "locar", "locak", m_opts.get_float("LocaProbValSpace", "LocaDefaultVal", true));
}

void ExpSeqDB::init_phenotype() {
    read_pair(m_pheno_set, "phenor", "phenok",
              m_opts.get_float("PhenoProbValSpace", "PhenoDefaultVal", true));
}

void ExpSeqDB::full_init_from_matrix(std::istream& in, bool cond_std, bool gene_std, bool gene_std_flag) {
    int rows = 0, cols = 0;
    if (!(in >> rows >> cols)) {
        std::cerr << "RENFIL: Cant parse matrix header line" << std::endl;
        std::exit(1);
    }
    std::string rest;
    std::getline(in, rest);
    m_universe.init_idspace(rows);
    m_ok_vars.set_size(m_universe.size());
    m_ok_vars.set(true);
    m_expset.read_mat(in, cols);
    if (gene_std)
        m_expset.gene_standartize(gene_std_flag, 0);
    if (cond_std)
        m_expset.cond_standartize(false, 0);
    m_array_ec.reset(new ArrayVarEC(m_expset));
    if (m_opts.get_int("ProbValSpace", "UseAutomaticDiscretization", true) != 0)
        m_val_space.reinit_auto(m_expset);
}
