// The vesk run: read options and tables, bootstrap, annotate every set and write the report.
#include "VeskRun.h"

#include "Annot.h"
#include "Bootstrap.h"
#include "ClassMembers.h"
#include "FastEnrich.h"
#include "ParallelFor.h"
#include "Random.h"
#include "ValSpace3.h"
#include "VarClasses.h"
#include "VarUniverse.h"
#include "error.h"
#include "idbound.h"
#include "options.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

static constexpr char kSrc[] = "vesk";

namespace {

const double kLn10 = 2.302585092994045684;

// A gene word by its printed name first, then by its first name; -1 with a warning if neither.
int match_gene(const VarUniverse& univ, const std::string& word) {
    int id = VarUniverse::find(univ.m_short_to_id, word);
    if (id < 0)
        id = VarUniverse::find(univ.m_name_to_id, word);
    if (id < 0)
        std::cerr << "canot match orf " << word << std::endl;
    return id;
}

bool class_holds(const VarClasses& classes, int c, int g) { return classes.m_class_bits[c].get_ind(g); }
bool class_holds(const ClassMembers& classes, int c, int g) { return classes.holds(c, g); }

// The report lines of one set from its annotation; `Classes` is VarClasses or ClassMembers.
template <class Classes>
void write_set_lines(std::ostream& rep, int set_id, const std::vector<int>& members,
                     const std::vector<Annot>& out, const std::vector<int>& order, const Classes& classes,
                     const VarUniverse& univ, const std::map<std::string, std::string>& types,
                     const std::vector<float>& kept, int boot_num, float ceiling, bool gene_list) {
    for (int idx : order) {
        const Annot& a = out[idx];
        if (a.m_filtered || a.m_log_pv > ceiling)
            continue;
        int count = 1;
        for (float v : kept) {
            if (v > a.m_log_pv)
                break;
            ++count;
        }
        const float quotient = static_cast<float>(count) / static_cast<float>(boot_num);
        const float col4 = static_cast<float>(logf(quotient) / kLn10);
        // Four decimals of log10, truncated toward zero.
        const float scaled = a.m_log_pv * 10000.0f;
        const double col3 = std::trunc(static_cast<double>(scaled) / kLn10) / 10000.0 + 0.0;

        const std::string& key = classes.m_class_keys[a.m_cls];
        auto type = types.find(key);
        rep << set_id << '\t' << classes.m_class_names[a.m_cls] << '\t' << col3 << '\t' << col4 << '\t'
            << a.m_frac << '\t' << a.m_inter << '\t' << key << '\t'
            << (type == types.end() ? std::string("NA") : type->second);
        if (gene_list) {
            for (int g : members)
                if (class_holds(classes, a.m_cls, g))
                    rep << '\t' << univ.m_short_names[g];
        }
        rep << '\n';
    }
}

// Annotation of every real set with the indexed annotator, sets spread over threads; the trace
// lines and report lines then come out in set order, as the reference path writes them.
void report_all_fast(std::ostream& rep, const std::vector<std::vector<int>>& sets,
                     const ClassMembers& classes, const VarUniverse& univ,
                     const std::map<std::string, std::string>& types, const std::vector<float>& kept,
                     int boot_num, float ceiling, bool gene_list, int n_vars, int threads) {
    std::size_t max_set = 0;
    for (const std::vector<int>& set : sets)
        max_set = std::max(max_set, set.size());
    const FastAnnotator annotator(classes, n_vars, static_cast<int>(max_set));

    struct SetResult {
        std::vector<Annot> out;
        std::vector<int> order;
        std::string trace;
    };
    std::vector<SetResult> results(sets.size());
    struct Scratch {
        FastAnnotator::Workspace w;
        ds_bitvec set_bits;
    };
    std::vector<Scratch> scratch;
    for (int t = 0; t < parallel_workers(static_cast<int>(sets.size()), threads); ++t)
        scratch.push_back(Scratch{annotator.make_workspace(), ds_bitvec(n_vars)});
    parallel_for(static_cast<int>(sets.size()), threads, [&](int worker, int s) {
        Scratch& sc = scratch[worker];
        sc.set_bits.clear();
        for (int g : sets[s])
            sc.set_bits.set_ind(g);
        annotator.annotate(sc.set_bits, results[s].out, results[s].order, results[s].trace, sc.w);
    });

    for (std::size_t s = 0; s < sets.size(); ++s) {
        if (!results[s].trace.empty())
            std::cerr << results[s].trace << std::flush;
        write_set_lines(rep, static_cast<int>(s), sets[s], results[s].out, results[s].order, classes, univ,
                        types, kept, boot_num, ceiling, gene_list);
    }
}

// Everything a run reads: the options, the universe of genes and the five tables.
struct VeskInputs {
    options opts;
    std::unique_ptr<ValSpace3> val_space;
    std::unique_ptr<VarUniverse> univ;
    int n_vars = 0;
    ds_bitvec chip_mask;
    std::vector<int> chip_ids;
    std::map<std::string, std::string> types;
    VarClasses classes;   // read for the reference path
    ClassMembers members; // the same table, read for the fast path
    std::vector<std::vector<int>> sets;
};

// Reads the option files in order, seeds the random source and reads the tables. The keys are
// fetched in the order the run needs them, which is the order a missing key is reported in.
void read_inputs(int argc, char** argv, VeskInputs& in, const VeskRunSettings& settings) {
    options& opts = in.opts;
    for (int i = 1; i < argc; ++i) {
        std::cerr << "will read " << argv[i] << std::endl;
        std::ifstream file(argv[i]);
        opts.read(file, false);
    }

    Random::reset(opts.get_int("Random", "Seed", true));

    in.val_space = std::make_unique<ValSpace3>(opts, "kaka");
    in.univ = std::make_unique<VarUniverse>(in.val_space.get());
    VarUniverse& univ = *in.univ;
    {
        const std::string& path = opts.get_str("Tables", "varob", true);
        std::ifstream file(path.c_str());
        if (!file)
            VESK_FATAL(kSrc, "cannot open varob table " << path << "\n");
        univ.read_short_tabs(file);
    }
    in.n_vars = univ.size();
    in.chip_mask = ds_bitvec(in.n_vars);
    {
        std::ifstream file(opts.get_str("Tables", "ChipOrfs", true).c_str());
        if (!file)
            VESK_FATAL(kSrc, "Cannot open chip orf file\n");
        std::string word;
        while (file >> word) {
            const int id = match_gene(univ, word);
            if (id < 0)
                continue;
            in.chip_mask.set_ind(id);
            in.chip_ids.push_back(id);
        }
    }
    {
        std::ifstream file(opts.get_str("Tables", "GoTypeTab", true).c_str());
        if (!file)
            VESK_FATAL(kSrc, "Cannot open go type file\n");
        std::string key, type;
        while (file >> key >> type)
            in.types[key] = type;
    }
    {
        const std::string assoc_path = opts.get_str("Tables", "clsassoc", true);
        const std::string key_path = opts.get_str("Tables", "goclskey", true);
        // The fast path keeps member lists: no bit vector of the universe's width per class.
        if (settings.reference_bootstrap)
            in.classes.read(key_path, assoc_path, in.n_vars, &in.chip_mask);
        else
            in.members.read(key_path, assoc_path, in.n_vars, &in.chip_mask);
    }
    {
        std::ifstream file(opts.get_str("Tables", "SetsOrfs", true).c_str());
        if (!file)
            VESK_FATAL(kSrc, "Cannot open sets orf file\n");
        read_gene_sets(file, univ, in.sets);
        std::cerr << "got " << in.sets.size() << " sets" << std::endl;
    }
}

// Sets the enrichment filters from scope `Vesk` and the universe size from the chip; returns the
// number of bootstrap passes, whose key the run reads first.
int set_globals(options& opts, const ds_bitvec& chip_mask) {
    const int boot_num = opts.get_int("Vesk", "BootstrapNum", true);
    g_min_cls_size = opts.get_int("Vesk", "MinClsSize", true);
    g_max_cls_size = opts.get_int("Vesk", "MaxClsSize", true);
    g_min_inter = opts.get_int("Vesk", "MinClsInter", true);
    g_max_pv_to_rep = logf(opts.get_float("Vesk", "MaxPvToRep", true));
    g_filter_red_pv_thresh = logf(opts.get_float("Vesk", "FilterRedPVThres", true));
    g_univ_size = chip_mask.on_bits();
    return boot_num;
}

// The best value of every bootstrap pass that is below `ceiling`, sorted ascending.
std::vector<float> run_bootstrap(const VeskInputs& in, int boot_num, float ceiling,
                                 const VeskRunSettings& settings) {
    BootstrapState boot;
    bootstrap_init(boot, static_cast<int>(in.chip_ids.size()), in.n_vars);
    std::vector<float> kept;
    if (settings.reference_bootstrap)
        bootstrap_reference(in.classes, in.sets, in.chip_ids, in.n_vars, boot_num, ceiling, boot, kept);
    else
        bootstrap_fast(in.members, in.sets, in.chip_ids, in.n_vars, boot_num, ceiling, boot, kept,
                       settings.threads);

    std::sort(kept.begin(), kept.end());
    std::cerr << "got " << kept.size() << "rand pvs";
    if (!kept.empty())
        std::cerr << " worst " << kept.front();
    std::cerr << std::endl;
    return kept;
}

// Annotates every set and writes the report lines to Tables::AnnotReport.
void write_report(VeskInputs& in, const std::vector<float>& kept, int boot_num, float ceiling,
                  const VeskRunSettings& settings) {
    options& opts = in.opts;
    const bool gene_list =
        opts.has_option("Vesk", "ReportGeneList") && opts.get_int("Vesk", "ReportGeneList", true) != 0;
    std::ofstream rep(opts.get_str("Tables", "AnnotReport", true).c_str(), std::ios::out | std::ios::trunc);

    if (settings.reference_bootstrap) {
        ds_bitvec scratch(in.n_vars);
        std::vector<Annot> out;
        std::vector<int> order;
        for (int s = 0; s < static_cast<int>(in.sets.size()); ++s) {
            scratch.clear();
            for (int g : in.sets[s])
                scratch.set_ind(g);
            annotate(in.classes, scratch, out, order);
            write_set_lines(rep, s, in.sets[s], out, order, in.classes, *in.univ, in.types, kept, boot_num,
                            ceiling, gene_list);
        }
    } else {
        report_all_fast(rep, in.sets, in.members, *in.univ, in.types, kept, boot_num, ceiling, gene_list,
                        in.n_vars, settings.threads);
    }
}

} // namespace

void read_gene_sets(std::istream& in, const VarUniverse& univ, std::vector<std::vector<int>>& sets) {
    std::string word;
    int set_id;
    int row = 0;
    while (in >> word >> set_id) {
        ++row;
        const int g = match_gene(univ, word);
        if (g < 0)
            continue;
        if (!input_id_ok(set_id))
            VESK_FATAL(kSrc, "Bad set id " << set_id << " in row " << row);
        if (set_id >= static_cast<int>(sets.size()))
            sets.resize(set_id + 1);
        sets[set_id].push_back(g);
    }
}

int vesk_main(int argc, char** argv, const VeskRunSettings& settings) {
    VeskInputs in;
    read_inputs(argc, argv, in, settings);
    const float ceiling = static_cast<float>(std::log(0.1));
    const int boot_num = set_globals(in.opts, in.chip_mask);
    const std::vector<float> kept = run_bootstrap(in, boot_num, ceiling, settings);
    write_report(in, kept, boot_num, ceiling, settings);
    return 0;
}
