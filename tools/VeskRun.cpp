// The vesk run: read options and tables, bootstrap, annotate every set and write the report.
#include "VeskRun.h"

#include "Annot.h"
#include "Bootstrap.h"
#include "FastEnrich.h"
#include "Random.h"
#include "ValSpace3.h"
#include "VarClasses.h"
#include "VarUniverse.h"
#include "error.h"
#include "options.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <thread>
#include <vector>

static constexpr char kSrc[] = "vesk";

namespace {

const double kLn10 = 2.302585092994045684;

// VESK_BOOTSTRAP=reference selects the straightforward class-by-class bootstrap; both paths give
// the same report. VESK_THREADS sets the threads of the fast path (default: the machine's cores).
bool use_reference_bootstrap() {
    const char* v = std::getenv("VESK_BOOTSTRAP");
    return v && std::string(v) == "reference";
}

int bootstrap_threads() {
    const char* v = std::getenv("VESK_THREADS");
    if (v && std::atoi(v) > 0)
        return std::atoi(v);
    const unsigned hw = std::thread::hardware_concurrency();
    return hw > 0 ? static_cast<int>(std::min(hw, 16u)) : 1;
}

// A gene word by its printed name first, then by its first name; -1 with a warning if neither.
int match_gene(const VarUniverse& univ, const std::string& word) {
    int id = VarUniverse::find(univ.m_short_to_id, word);
    if (id < 0)
        id = VarUniverse::find(univ.m_name_to_id, word);
    if (id < 0)
        std::cerr << "canot match orf " << word << std::endl;
    return id;
}

// The report lines of one set from its annotation.
void write_set_lines(std::ostream& rep, int set_id, const std::vector<int>& members,
                     const std::vector<Annot>& out, const std::vector<int>& order, const VarClasses& classes,
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
            const ds_bitvec& cls = classes.m_class_bits[a.m_cls];
            for (int g : members)
                if (cls.get_ind(g))
                    rep << '\t' << univ.m_short_names[g];
        }
        rep << '\n';
    }
}

// Annotation of every real set with the indexed annotator, sets spread over threads; the trace
// lines and report lines then come out in set order, as the reference path writes them.
void report_all_fast(std::ostream& rep, const std::vector<std::vector<int>>& sets, const VarClasses& classes,
                     const VarUniverse& univ, const std::map<std::string, std::string>& types,
                     const std::vector<float>& kept, int boot_num, float ceiling, bool gene_list, int n_vars,
                     int threads) {
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
    std::atomic<int> next(0);
    auto work = [&]() {
        FastAnnotator::Workspace w = annotator.make_workspace();
        ds_bitvec scratch(n_vars);
        for (int s = next++; s < static_cast<int>(sets.size()); s = next++) {
            scratch.clear();
            for (int g : sets[s])
                scratch.set_ind(g);
            annotator.annotate(scratch, results[s].out, results[s].order, results[s].trace, w);
        }
    };
    std::vector<std::thread> pool;
    for (int t = 1; t < threads; ++t)
        pool.emplace_back(work);
    work();
    for (std::thread& th : pool)
        th.join();

    for (std::size_t s = 0; s < sets.size(); ++s) {
        if (!results[s].trace.empty())
            std::cerr << results[s].trace << std::flush;
        write_set_lines(rep, static_cast<int>(s), sets[s], results[s].out, results[s].order, classes, univ,
                        types, kept, boot_num, ceiling, gene_list);
    }
}

} // namespace

int vesk_main(int argc, char** argv) {
    options opts;
    for (int i = 1; i < argc; ++i) {
        std::cerr << "will read " << argv[i] << std::endl;
        std::ifstream in(argv[i]);
        opts.read(in, false);
    }

    Random::reset(opts.get_int("Random", "Seed", true));

    ValSpace3 val_space(opts, "kaka");
    VarUniverse univ(&val_space);
    {
        const std::string& path = opts.get_str("Tables", "varob", true);
        std::ifstream in(path.c_str());
        if (!in)
            VESK_FATAL(kSrc, "cannot open varob table " << path << "\n");
        univ.read_short_tabs(in);
    }
    const int n_vars = univ.size();
    ds_bitvec chip_mask(n_vars);
    std::vector<int> chip_ids;
    {
        std::ifstream in(opts.get_str("Tables", "ChipOrfs", true).c_str());
        if (!in)
            VESK_FATAL(kSrc, "Cannot open chip orf file\n");
        std::string word;
        while (in >> word) {
            const int id = match_gene(univ, word);
            if (id < 0)
                continue;
            chip_mask.set_ind(id);
            chip_ids.push_back(id);
        }
    }

    std::map<std::string, std::string> types;
    {
        std::ifstream in(opts.get_str("Tables", "GoTypeTab", true).c_str());
        if (!in)
            VESK_FATAL(kSrc, "Cannot open go type file\n");
        std::string key, type;
        while (in >> key >> type)
            types[key] = type;
    }

    VarClasses classes;
    {
        const std::string assoc_path = opts.get_str("Tables", "clsassoc", true);
        const std::string key_path = opts.get_str("Tables", "goclskey", true);
        classes.read(key_path, assoc_path, n_vars, &chip_mask);
    }

    std::vector<std::vector<int>> sets;
    {
        std::ifstream in(opts.get_str("Tables", "SetsOrfs", true).c_str());
        if (!in)
            VESK_FATAL(kSrc, "Cannot open sets orf file\n");
        std::string word;
        int set_id;
        while (in >> word >> set_id) {
            const int g = match_gene(univ, word);
            if (g < 0 || set_id < 0)
                continue;
            if (set_id >= static_cast<int>(sets.size()))
                sets.resize(set_id + 1);
            sets[set_id].push_back(g);
        }
        std::cerr << "got " << sets.size() << " sets" << std::endl;
    }

    BootstrapState boot;
    bootstrap_init(boot, static_cast<int>(chip_ids.size()), n_vars);
    const float ceiling = static_cast<float>(std::log(0.1));
    const int boot_num = opts.get_int("Vesk", "BootstrapNum", true);
    g_min_cls_size = opts.get_int("Vesk", "MinClsSize", true);
    g_max_cls_size = opts.get_int("Vesk", "MaxClsSize", true);
    g_min_inter = opts.get_int("Vesk", "MinClsInter", true);
    g_max_pv_to_rep = logf(opts.get_float("Vesk", "MaxPvToRep", true));
    g_filter_red_pv_thresh = logf(opts.get_float("Vesk", "FilterRedPVThres", true));
    g_univ_size = chip_mask.on_bits();

    std::vector<float> kept;
    const bool reference = use_reference_bootstrap();
    if (reference)
        bootstrap_reference(classes, sets, chip_ids, n_vars, boot_num, ceiling, boot, kept);
    else
        bootstrap_fast(classes, sets, chip_ids, n_vars, boot_num, ceiling, boot, kept, bootstrap_threads());

    std::sort(kept.begin(), kept.end());
    std::cerr << "got " << kept.size() << "rand pvs";
    if (!kept.empty())
        std::cerr << " worst " << kept.front();
    std::cerr << std::endl;

    const bool gene_list =
        opts.has_option("Vesk", "ReportGeneList") && opts.get_int("Vesk", "ReportGeneList", true) != 0;
    std::ofstream rep(opts.get_str("Tables", "AnnotReport", true).c_str(), std::ios::out | std::ios::trunc);

    if (reference) {
        ds_bitvec scratch(n_vars);
        std::vector<Annot> out;
        std::vector<int> order;
        for (int s = 0; s < static_cast<int>(sets.size()); ++s) {
            scratch.clear();
            for (int g : sets[s])
                scratch.set_ind(g);
            annotate(classes, scratch, out, order);
            write_set_lines(rep, s, sets[s], out, order, classes, univ, types, kept, boot_num, ceiling,
                            gene_list);
        }
    } else {
        report_all_fast(rep, sets, classes, univ, types, kept, boot_num, ceiling, gene_list, n_vars,
                        bootstrap_threads());
    }
    return 0;
}
