// bn_infer: a Bayesian network from node, edge and probability tables; evidence set, every
// unobserved node queried alone, posteriors by the listed engines side by side.
//
//   bn_infer <option file>      (see examples/README.md for the scopes and keys)
#include "BNInference.h"
#include "BNState.h"
#include "BNet.h"
#include "ExampleIO.h"
#include "JointDist.h"
#include "LDTable.h"
#include "LocalDist.h"
#include "Random.h"
#include "options.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The rvid of a vid that names a node, else -1.
int rvid_of(const Net& net, int vid) {
    const int r = net.get_rvid(vid);
    return (r >= 0 && net.get_vid(r) == vid) ? r : -1;
}

// Lines "parent_vid child_vid"; their order fixes each child's parent order.
bool read_edges(std::istream& in, BNet<int>& net) {
    int from = 0, to = 0;
    while (in >> from >> to) {
        const int a = rvid_of(net, from), b = rvid_of(net, to);
        if (a < 0 || b < 0) {
            std::cerr << "Edge " << from << " " << to << " names an unknown vid" << std::endl;
            return false;
        }
        net.insert_edge(a, b, -1);
    }
    return true;
}

// Lines "vid p_0 p_1 ..." in table order; the probabilities become natural logs, 0 the log of zero.
bool read_cpts(std::istream& in, BNet<int>& net, std::vector<LDTable*>& tables) {
    std::string line;
    std::vector<int> seen(net.get_nodes_num(), 0);
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        int vid = 0;
        if (!(ls >> vid))
            continue;
        const int r = rvid_of(net, vid);
        if (r < 0) {
            std::cerr << "Table for unknown vid " << vid << std::endl;
            return false;
        }
        std::vector<float> logs;
        float p = 0.0f;
        while (ls >> p)
            logs.push_back(p > 0.0f ? logf(p) : kLogZero);
        if (static_cast<int>(logs.size()) != tables[r]->get_tab_size()) {
            std::cerr << "Table of vid " << vid << " has " << logs.size() << " entries, "
                      << tables[r]->get_tab_size() << " needed" << std::endl;
            return false;
        }
        tables[r]->set_table(logs);
        seen[r] = 1;
    }
    for (int r = 0; r < net.get_nodes_num(); ++r)
        if (!seen[r])
            std::cerr << "No table for vid " << net.get_vid(r) << ": it stays uniform" << std::endl;
    return true;
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "bn_infer", opts))
        return rc;
    Random::reset(opts.get_int("Random", "Seed", true));

    BNet<int> net;
    {
        std::ifstream in;
        if (!open_in(in, opts.get_str("Tables", "Nodes", true)))
            return 1;
        net.add_all_nodes(in);
    }
    {
        std::ifstream in;
        if (!open_in(in, opts.get_str("Tables", "Edges", true)) || !read_edges(in, net))
            return 1;
    }
    const int n = net.get_nodes_num();
    BNStateDispatch<int> state(net);
    net.set_state_ref(state);
    LocalDistSet<int> dists;
    std::vector<LDTable*> tables(n);
    for (int r = 0; r < n; ++r) {
        tables[r] = new LDTableDispatch(net, state, r);
        dists.add_ld(tables[r]);
        net.set_ldist(r, tables[r]);
    }
    {
        std::ifstream in;
        if (!open_in(in, opts.get_str("Tables", "Cpts", true)) || !read_cpts(in, net, tables))
            return 1;
    }

    // Evidence: vid-value pairs.
    std::map<int, int> evidence; // rvid -> value
    const std::vector<int>* ev = opts.get_ints("Bn", "Evidence", true);
    if (ev->size() % 2) {
        std::cerr << "Bn::Evidence must hold vid-value pairs" << std::endl;
        return 1;
    }
    for (std::size_t i = 0; i < ev->size(); i += 2) {
        const int r = rvid_of(net, (*ev)[i]);
        const int x = (*ev)[i + 1];
        if (r < 0 || x < 0 || x >= net.get_rvar_card(r)) {
            std::cerr << "Bad evidence " << (*ev)[i] << " = " << x << std::endl;
            return 1;
        }
        evidence[r] = x;
    }
    // Unobserved nodes by rising vid.
    std::map<int, int> hidden; // vid -> rvid
    for (int r = 0; r < n; ++r)
        if (!evidence.count(r))
            hidden[net.get_vid(r)] = r;

    const std::vector<std::string>* engines = opts.get_strs("Bn", "Engines", true);
    // posteriors[engine][rvid][value]
    std::vector<std::map<int, std::vector<double>>> posteriors;
    for (const std::string& name : *engines) {
        std::unique_ptr<BNInference<int>> engine;
        bool log_space = true;
        if (name == "exact")
            engine.reset(new BNInferExactNaive(net));
        else if (name == "gibbs") {
            engine.reset(new BNInferGibbs(net, opts, "Gibbs"));
            log_space = false;
        } else if (name == "modes")
            engine.reset(new BNInferGibbsModes(net, opts, "Gibbs"));
        else {
            std::cerr << "Unknown engine " << name << " (exact, gibbs or modes)" << std::endl;
            return 1;
        }
        // The state back to the evidence, through the dispatch so the tables' indices follow.
        for (int r = 0; r < n; ++r)
            state.set_rv_state(r, 0);
        BNInferQuery<int> query(net);
        for (const auto& e : evidence) {
            query.set_var_observed(e.first);
            state.set_rv_state(e.first, e.second);
        }
        std::vector<int> ids;
        for (const auto& h : hidden) {
            const int card = net.get_rvar_card(h.second);
            const std::list<int> one(1, h.second);
            ids.push_back(log_space ? query.add_query(one, JDLogVector(card))
                                    : query.add_query(one, JDVector(card)));
        }
        engine->preproc_query(query);
        engine->infer(query);
        std::map<int, std::vector<double>> post;
        std::size_t k = 0;
        for (const auto& h : hidden) {
            JointDist<int>* jd = query.get_posterior(ids[k++]);
            for (int x = 0; x < net.get_rvar_card(h.second); ++x) {
                const double d = jd->density(std::vector<int>(1, x));
                post[h.second].push_back(jd->is_log_space() ? std::exp(d) : d);
            }
        }
        posteriors.push_back(post);
    }

    std::ofstream out(opts.get_str("Tables", "OutPosteriors", true));
    if (!out) {
        std::cerr << "Cannot write the posterior table" << std::endl;
        return 1;
    }
    out << "vid\tvalue";
    for (const std::string& name : *engines)
        out << "\t" << name;
    out << "\n";
    for (const auto& h : hidden) {
        for (int x = 0; x < net.get_rvar_card(h.second); ++x) {
            out << h.first << "\t" << x;
            for (const auto& post : posteriors) {
                char buf[64];
                std::snprintf(buf, sizeof buf, "%.9g", post.at(h.second)[x]);
                out << "\t" << buf;
            }
            out << "\n";
        }
    }
    std::cout << n << " nodes, " << evidence.size() << " observed, " << hidden.size() << " queried, "
              << engines->size() << " engines" << std::endl;
    return 0;
}
