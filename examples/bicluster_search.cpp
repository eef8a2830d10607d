// bicluster_search: the expression biclustering road from one option file. Reads the gene table and
// the expression tables, builds the value space, the condition-variable graph and its weights, runs
// the hash-seeded search with greedy growth, drops overlapping results, tests each result against
// the same search on degree-preserving rewirings of the graph, and writes the reported biclusters to
// bick, bicd, bicm, a summary table and (optionally) one heatmap each.
//
//   bicluster_search <option file>      (see examples/README.md and docs/bicluster_search.md)
#include "ArrayVarEC.h"
#include "BicExpScoreAssess.h"
#include "BicGreedyOpt.h"
#include "BicSearchReport.h"
#include "ExampleExpr.h"
#include "ExpVarGraphACO.h"
#include "HashBiclust.h"
#include "Random.h"
#include "StateDataSetReal.h"
#include "ValSpaceProb.h"
#include "VarUniverse.h"
#include "WgtSchemeGroupIndeg.h"
#include "ds/BitVecIter.h"
#include "options.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Fewer hashable genes than this and the search can't find anything worth reporting.
constexpr int kMinHashable = 5;

// An optional scalar key: its text, or `fallback` when the store lacks it.
std::string opt_text(options& opts, const std::string& scope, const std::string& name,
                     const std::string& fallback) {
    return opts.has_option(scope, name) ? opts.get_str(scope, name, false) : fallback;
}

double opt_number(options& opts, const std::string& scope, const std::string& name, double fallback) {
    const std::string s = opt_text(opts, scope, name, "");
    return s.empty() ? fallback : std::strtod(s.c_str(), nullptr);
}

// Edge counts of the variable nodes that the hash may visit (those of the active variable groups).
std::vector<int> hashable_degrees(const ExpVarGraphBase& graph, options& opts) {
    const std::vector<int>* active = opts.get_ints("Hash", "ActiveVarGroup", true);
    std::vector<int> degrees;
    for (int v = graph.m_max_exp_node; v < graph.m_node_count; ++v) {
        if (!graph.node_use(v) || graph.is_exp_node(v))
            continue;
        if (std::find(active->begin(), active->end(), graph.node_group(v)) == active->end())
            continue;
        degrees.push_back(graph.node_in_edges_num(v));
    }
    std::sort(degrees.begin(), degrees.end());
    return degrees;
}

// Condition nodes of the active condition groups: the alphabet of the hash keys.
int active_condition_nodes(const ExpVarGraphBase& graph, options& opts) {
    const std::vector<int>* active = opts.get_ints("Hash", "ActiveExpGroup", true);
    int n = 0;
    for (int e = 0; e < graph.m_max_exp_node; ++e)
        if (std::find(active->begin(), active->end(), graph.node_group(e)) != active->end())
            ++n;
    return n;
}

void set_key(options& opts, const std::string& scope, const std::string& name, int value) {
    opts.m_opt_values[scope + "::" + name] = std::to_string(value);
    std::cout << "auto " << scope << "::" << name << " = " << value << std::endl;
}

// Replaces the `auto` hash settings by values derived from the graph, then checks that enough genes
// fall in the degree window. Returns false (having said why) when they don't.
bool fit_hash_settings(const ExpVarGraphBase& graph, options& opts) {
    const std::vector<int> degrees = hashable_degrees(graph, opts);
    if (opts.get_str("Hash", "MinHashDegree", true) == "auto")
        set_key(opts, "Hash", "MinHashDegree", std::max(1, opts.get_int("Hash", "MinHashSize", true)));
    if (opts.get_str("Hash", "MaxHashDegree", true) == "auto")
        set_key(opts, "Hash", "MaxHashDegree", degrees.empty() ? 0 : degrees.back());
    const int lo = opts.get_int("Hash", "MinHashDegree", true);
    const int hi = opts.get_int("Hash", "MaxHashDegree", true);
    const int inside = count_in_range(degrees, lo, hi);
    if (inside < kMinHashable) {
        std::cerr << "Only " << inside << " of " << degrees.size()
                  << " gene nodes have a degree in [MinHashDegree " << lo << ", MaxHashDegree " << hi
                  << "]: too few to search.\n"
                  << "Gene node degrees: min " << sorted_quantile(degrees, 0.0) << ", 10% "
                  << sorted_quantile(degrees, 0.1) << ", 25% " << sorted_quantile(degrees, 0.25)
                  << ", median " << sorted_quantile(degrees, 0.5) << ", 75% "
                  << sorted_quantile(degrees, 0.75) << ", 90% " << sorted_quantile(degrees, 0.9) << ", max "
                  << sorted_quantile(degrees, 1.0) << "\n"
                  << "MinHashDegree = " << sorted_quantile(degrees, 0.0)
                  << " and MaxHashDegree = " << sorted_quantile(degrees, 1.0)
                  << " would hash all of them (MaxHashDegree = auto does so)." << std::endl;
        return false;
    }
    if (opts.get_str("Hash", "MinVarSetSize", true) == "auto") {
        std::vector<int> hashed;
        for (int d : degrees)
            if (d >= lo && d <= hi)
                hashed.push_back(d);
        const double chance =
            chance_key_count(hashed, opts.get_int("Hash", "MaxNeigSize", true),
                             active_condition_nodes(graph, opts), opts.get_int("Hash", "MinHashSize", true));
        set_key(opts, "Hash", "MinVarSetSize", auto_min_var_set_size(chance));
    }
    return true;
}

// The weights of a graph, derived as every run derives them.
std::unique_ptr<WgtSchemeGroupIndeg> make_weights(ExpVarGraphBase& graph, ArrayVarEC& classes,
                                                  options& opts) {
    return std::make_unique<WgtSchemeGroupIndeg>(graph, classes, opts, "Weights",
                                                 opts.get_float("Weights", "ModelP", true), true);
}

// One search on `graph`: hashed seeds grown greedily, overlaps dropped.
std::list<ExpVarBiclust> run_search(ExpVarGraphBase& graph, WgtSchemeBase& wgt, options& opts,
                                    std::vector<BicSizeScore>* sizes) {
    BicGreedyOpt opt(graph, wgt, opts, "Greedy", true);
    HashBiclust search(graph, wgt, opt, opts, "Hash");
    search.reduce_bic_set(opts.get_float("Hash", "MaxOverlap", true));
    if (sizes)
        for (const ExpVarBiclust& b : search.m_bics)
            sizes->push_back({b.m_score, b.m_exps.on_bits(), b.m_vars.on_bits()});
    return search.m_bics;
}

struct NullSettings {
    int runs = 0;
    int threads = 1;
    int rewire = 1;
    bool per_cond = false;
    bool pool_reportable = false;
    bool logit = false;
};

// The null runs: each rewires a fresh copy of the graph with `randomize` (degrees kept), and runs the
// same search on it. The random source is one per process, so each run goes in a child process
// that starts the source from its own seed, drawn in order from the main stream beforehand: the
// results do not depend on how many run at once. Returns false when a run failed.
bool null_runs(const NullSettings& ns, VarUniverse& universe, StateDataSetReal& data, ArrayVarEC& classes,
               options& opts, std::vector<std::vector<BicSizeScore>>& out) {
    std::vector<int> seeds(ns.runs);
    for (int& s : seeds)
        s = static_cast<int>(Random::bits() & 0x3fffffffu) + 1;
    out.assign(ns.runs, {});
    struct Job {
        FILE* file;
        int run;
    };
    std::map<pid_t, Job> jobs;
    int next = 0;
    bool ok = true;
    while (next < ns.runs || !jobs.empty()) {
        while (ok && next < ns.runs && static_cast<int>(jobs.size()) < std::max(1, ns.threads)) {
            FILE* f = std::tmpfile();
            if (!f) {
                std::cerr << "Cannot make a scratch file for null run " << next << std::endl;
                ok = false;
                break;
            }
            std::cout.flush();
            std::cerr.flush();
            std::fflush(nullptr);
            const pid_t pid = fork();
            if (pid < 0) {
                std::cerr << "Cannot start null run " << next << std::endl;
                std::fclose(f);
                ok = false;
                break;
            }
            if (pid == 0) {
                if (!ns.logit) {
                    const int devnull = open("/dev/null", O_WRONLY);
                    if (devnull >= 0)
                        dup2(devnull, 2);
                }
                Random::reset(seeds[next]);
                ExpVarGraphACO graph(universe, data, opts, "Graph", true);
                graph.randomize(ns.rewire);
                std::vector<BicSizeScore> sizes;
                std::unique_ptr<WgtSchemeGroupIndeg> wgt = make_weights(graph, classes, opts);
                run_search(graph, *wgt, opts, &sizes);
                for (const BicSizeScore& b : sizes)
                    std::fprintf(f, "%.9g %d %d\n", static_cast<double>(b.score), b.conds, b.genes);
                std::fflush(f);
                _exit(std::ferror(f) ? 1 : 0);
            }
            jobs[pid] = {f, next++};
        }
        if (jobs.empty())
            break;
        int status = 0;
        const pid_t done = waitpid(-1, &status, 0);
        auto it = jobs.find(done);
        if (it == jobs.end())
            continue;
        Job job = it->second;
        jobs.erase(it);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            std::cerr << "Null run " << job.run << " failed" << std::endl;
            ok = false;
        } else {
            std::rewind(job.file);
            double score;
            int conds, genes;
            while (std::fscanf(job.file, "%lf %d %d", &score, &conds, &genes) == 3)
                out[job.run].push_back({static_cast<float>(score), conds, genes});
        }
        std::fclose(job.file);
    }
    return ok;
}

// Diverging colour of `x` on [-lim, lim]: blue below 0, white at 0, red above.
std::string heat_colour(float x, float lim) {
    float t = lim > 0 ? x / lim : 0.0f;
    t = std::max(-1.0f, std::min(1.0f, t));
    int r = 255, g = 255, b = 255;
    if (t > 0) {
        g = b = static_cast<int>(255.0f * (1.0f - t) + 0.5f);
        r = static_cast<int>(255.0f - 75.0f * t + 0.5f);
    } else if (t < 0) {
        r = g = static_cast<int>(255.0f * (1.0f + t) + 0.5f);
        b = static_cast<int>(255.0f + 75.0f * t + 0.5f);
    }
    char buf[8];
    std::snprintf(buf, sizeof buf, "#%02x%02x%02x", r, g, b);
    return buf;
}

// One heatmap as SVG: the bicluster's genes as rows; its conditions first, then the other conditions;
// a diverging scale centred at 0, its limit the largest absolute value shown.
void write_heatmap(std::ostream& out, int id, const std::vector<int>& genes, const std::vector<int>& conds,
                   const StateDataSetReal& data, const VarUniverse& universe) {
    std::vector<int> cols = conds;
    for (int e = 0; e < data.m_E; ++e)
        if (std::find(conds.begin(), conds.end(), e) == conds.end())
            cols.push_back(e);
    float lim = 0.0f;
    for (int v : genes)
        for (int e : cols)
            lim = std::max(lim, std::fabs(data.get_var_s_state(e, v)));
    const int cw = std::max(2, std::min(14, 900 / std::max(1, static_cast<int>(cols.size()))));
    const int ch = std::max(2, std::min(14, 700 / std::max(1, static_cast<int>(genes.size()))));
    const bool labels = ch >= 8;
    const int left = labels ? 90 : 10, top = 40;
    const int w = left + cw * static_cast<int>(cols.size()) + 20;
    const int h = top + ch * static_cast<int>(genes.size()) + 50;
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << w << "\" height=\"" << h << "\">\n"
        << "<text x=\"" << left << "\" y=\"16\" font-family=\"sans-serif\" font-size=\"12\">bicluster " << id
        << ": " << genes.size() << " genes x " << conds.size()
        << " conditions (left of the line), then the other " << cols.size() - conds.size() << "</text>\n";
    for (std::size_t r = 0; r < genes.size(); ++r) {
        if (labels)
            out << "<text x=\"" << left - 4 << "\" y=\"" << top + ch * static_cast<int>(r) + ch - 1
                << "\" font-family=\"sans-serif\" font-size=\"" << ch - 1 << "\" text-anchor=\"end\">"
                << universe.m_vars[genes[r]]->m_name << "</text>\n";
        for (std::size_t c = 0; c < cols.size(); ++c)
            out << "<rect x=\"" << left + cw * static_cast<int>(c) << "\" y=\""
                << top + ch * static_cast<int>(r) << "\" width=\"" << cw << "\" height=\"" << ch
                << "\" fill=\"" << heat_colour(data.get_var_s_state(cols[c], genes[r]), lim) << "\"/>\n";
    }
    const int xl = left + cw * static_cast<int>(conds.size());
    out << "<line x1=\"" << xl << "\" y1=\"" << top - 4 << "\" x2=\"" << xl << "\" y2=\""
        << top + ch * static_cast<int>(genes.size()) + 4 << "\" stroke=\"black\"/>\n";
    // The scale: 21 steps from -lim to lim.
    const int ly = top + ch * static_cast<int>(genes.size()) + 15;
    for (int k = 0; k <= 20; ++k)
        out << "<rect x=\"" << left + 10 * k << "\" y=\"" << ly << "\" width=\"10\" height=\"10\" fill=\""
            << heat_colour(lim * (k - 10) / 10.0f, lim) << "\"/>\n";
    out << "<text x=\"" << left << "\" y=\"" << ly + 24 << "\" font-family=\"sans-serif\" font-size=\"10\">"
        << std::setprecision(3) << -lim << "</text>\n"
        << "<text x=\"" << left + 100 << "\" y=\"" << ly + 24
        << "\" font-family=\"sans-serif\" font-size=\"10\">0</text>\n"
        << "<text x=\"" << left + 190 << "\" y=\"" << ly + 24
        << "\" font-family=\"sans-serif\" font-size=\"10\">" << lim << "</text>\n</svg>\n";
}

std::string join_names(const std::vector<std::string>& names) {
    std::string s;
    for (std::size_t i = 0; i < names.size(); ++i)
        s += (i ? "," : "") + names[i];
    return s;
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "bicluster_search", opts))
        return rc;
    Random::reset(opts.get_int("Random", "Seed", true));

    ValSpaceProb space(opts, "ValSpace", false);
    VarUniverse universe(&space);
    StateDataSetReal data(universe);
    if (!read_expression(opts, universe, data))
        return 1;
    std::cout << universe.size() << " genes, " << data.m_E << " conditions" << std::endl;

    ExpVarGraphACO graph(universe, data, opts, "Graph", true);
    ArrayVarEC classes(data);
    std::unique_ptr<WgtSchemeGroupIndeg> wgt = make_weights(graph, classes, opts);
    std::cout << graph.nodes_num() << " nodes, " << graph.edges_num() << " edges" << std::endl;
    if (!fit_hash_settings(graph, opts))
        return 3;

    NullSettings ns;
    ns.runs = static_cast<int>(opt_number(opts, "Null", "Runs", 0));
    ns.threads = static_cast<int>(opt_number(opts, "Null", "Threads", 1));
    ns.rewire = static_cast<int>(opt_number(opts, "Null", "Rewire", 1));
    ns.logit = opt_number(opts, "Null", "Logit", 0) != 0;
    const std::string compare = opt_text(opts, "Null", "Compare", "percond");
    if (compare != "score" && compare != "percond") {
        std::cerr << "Null::Compare must be score or percond, not " << compare << std::endl;
        return 1;
    }
    ns.per_cond = compare == "percond";
    const std::string pool = opt_text(opts, "Null", "Pool", "all");
    if (pool != "all" && pool != "reportable") {
        std::cerr << "Null::Pool must be all or reportable, not " << pool << std::endl;
        return 1;
    }
    ns.pool_reportable = pool == "reportable";

    const double max_q = opt_number(opts, "Report", "MaxQ", 1.0);
    const int min_conds = static_cast<int>(opt_number(opts, "Report", "MinConds", 0));
    const int min_genes = static_cast<int>(opt_number(opts, "Report", "MinGenes", 0));

    std::list<ExpVarBiclust> found = run_search(graph, *wgt, opts, nullptr);
    std::cout << found.size() << " biclusters found" << std::endl;

    // Only real biclusters of the reportable size are tested; the null pool holds every null
    // bicluster unless Null::Pool asks for the reportable ones only.
    auto big_enough = [&](int conds, int genes) { return conds >= min_conds && genes >= min_genes; };
    std::vector<const ExpVarBiclust*> cand;
    for (const ExpVarBiclust& b : found)
        if (big_enough(b.m_exps.on_bits(), b.m_vars.on_bits()))
            cand.push_back(&b);
    std::cout << cand.size() << " biclusters tested" << std::endl;

    std::vector<double> p(cand.size(), 1.0);
    if (ns.runs > 0) {
        std::vector<std::vector<BicSizeScore>> per_run;
        if (!null_runs(ns, universe, data, classes, opts, per_run))
            return 1;
        std::vector<BicSizeScore> pooled;
        for (const auto& run : per_run)
            for (const BicSizeScore& b : run)
                if (!ns.pool_reportable || big_enough(b.conds, b.genes))
                    pooled.push_back(b);
        std::cout << ns.runs << " null runs, " << pooled.size() << " null biclusters" << std::endl;
        // The smallest p the pool allows; when even that can't pass MaxQ the runs are too few.
        const double floor_p = 1.0 / (1.0 + static_cast<double>(pooled.size()));
        if (!cand.empty() && floor_p > max_q)
            std::cerr << "Warning: " << ns.runs << " null runs gave " << pooled.size()
                      << " null biclusters, so no p-value can be below " << floor_p
                      << " and none can pass MaxQ " << max_q << "; raise Null::Runs" << std::endl;
        for (std::size_t i = 0; i < cand.size(); ++i)
            p[i] = empirical_p({cand[i]->m_score, cand[i]->m_exps.on_bits(), cand[i]->m_vars.on_bits()},
                               pooled, ns.per_cond);
    }
    const std::vector<double> q = bh_q_values(p);
    std::vector<float> scores;
    for (const ExpVarBiclust* b : cand)
        scores.push_back(b->m_score);
    std::vector<int> order;
    for (int i : report_order(q, scores))
        if (q[i] <= max_q)
            order.push_back(i);
    std::cout << order.size() << " biclusters reported" << std::endl;

    std::ofstream bick(opts.get_str("Tables", "OutBick", true)),
        bicd(opts.get_str("Tables", "OutBicd", true)), bicm(opts.get_str("Tables", "OutBicm", true));
    const std::string summary_path = opt_text(opts, "Tables", "OutSummary", "");
    std::ofstream summary;
    if (!summary_path.empty())
        summary.open(summary_path);
    if (!bick || !bicd || !bicm || (!summary_path.empty() && !summary)) {
        std::cerr << "Cannot write the bicluster tables" << std::endl;
        return 1;
    }
    const std::string heat_dir = opt_text(opts, "Report", "HeatmapDir", "");
    if (!heat_dir.empty())
        mkdir(heat_dir.c_str(), 0777); // an existing directory is fine; a failure shows at the first file
    summary << "id\tscore\tp\tq\tgenes\tconditions\tgene_names\tcondition_names\n";
    int id = 0;
    for (int i : order) {
        const ExpVarBiclust& b = *cand[i];
        b.dump_to_tables(id, bick, bicd);
        // No motif search on this road: every bicluster has the pattern "none".
        bicm << id << "\tnone\t-1\t-1\n";
        std::vector<int> genes, conds;
        std::vector<std::string> gene_names, cond_names;
        for (ds_bitvec_iter v(b.m_vars); v; ++v) {
            genes.push_back(graph.node_var(v));
            gene_names.push_back(universe.m_vars[graph.node_var(v)]->m_name);
        }
        for (ds_bitvec_iter e(b.m_exps); e; ++e) {
            conds.push_back(graph.node_exp(e));
            cond_names.push_back(data.m_e_names[graph.node_exp(e)]);
        }
        summary << id << "\t" << b.m_score << "\t" << p[i] << "\t" << q[i] << "\t" << genes.size() << "\t"
                << conds.size() << "\t" << join_names(gene_names) << "\t" << join_names(cond_names) << "\n";
        if (!heat_dir.empty()) {
            std::ofstream svg(heat_dir + "/bicluster_" + std::to_string(id) + ".svg");
            if (!svg)
                std::cerr << "Cannot write a heatmap under " << heat_dir << std::endl;
            else
                write_heatmap(svg, id, genes, conds, data, universe);
        }
        std::cout << "bicluster " << id << ": score " << b.m_score << ", q " << q[i] << ", " << conds.size()
                  << " conditions x " << genes.size() << " genes" << std::endl;
        ++id;
    }
    bick.close();
    bicd.close();
    bicm.close();
    summary.close();

    // Put condition scores on the scale of chance: sampled sums of random gene sets per condition
    // and size, written to Assess::StatTable and Assess::GlobStatTable.
    if (opts.has_option("Assess", "StatTable")) {
        BicExpScoreAssess assess(graph, *wgt, graph.m_var_bits, opts, "Assess");
        std::cout << "assessment tables written to " << opts.get_str("Assess", "StatTable", true) << " and "
                  << opts.get_str("Assess", "GlobStatTable", true) << std::endl;
    }
    return 0;
}
