// Test helpers for ebn: a network with dispatching table distributions built from probability
// tables, the Asia network, and the reader of the numpy reference networks.
#ifndef VESK_TESTS_EBN_EBNTESTUTIL_H
#define VESK_TESTS_EBN_EBNTESTUTIL_H

#include "BNInference.h"
#include "BNState.h"
#include "BNet.h"
#include "JointDist.h"
#include "LDTable.h"
#include "LocalDist.h"

#include <cmath>
#include <fstream>
#include <list>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// Nodes 0..n-1 with vids equal to rvids, edges parents-in-order, LDTableDispatch tables filled
// with the logs of `probs` (own value fastest, then the parents in order).
struct TableNet {
    BNet<int> net;
    std::unique_ptr<BNStateDispatch<int>> state;
    LocalDistSet<int> dists;

    TableNet(const std::vector<int>& cards, const std::vector<std::vector<int>>& parents,
             const std::vector<std::vector<double>>& probs) {
        for (std::size_t v = 0; v < cards.size(); ++v)
            net.add_rand_var(static_cast<int>(v), cards[v]);
        for (std::size_t v = 0; v < parents.size(); ++v)
            for (int p : parents[v])
                net.insert_edge(p, static_cast<int>(v), -1);
        state.reset(new BNStateDispatch<int>(net));
        net.set_state_ref(*state);
        for (std::size_t v = 0; v < cards.size(); ++v) {
            LDTableDispatch* ld = new LDTableDispatch(net, *state, static_cast<int>(v));
            std::vector<float> logs;
            for (double p : probs[v])
                logs.push_back(p > 0 ? logf(static_cast<float>(p)) : kLogZero);
            ld->set_table(logs);
            net.set_ldist(static_cast<int>(v), ld);
            dists.add_ld(ld);
        }
    }
};

inline std::vector<double> bern(double p1) { return {1.0 - p1, p1}; }

inline std::vector<double> cat(std::vector<double> a, const std::vector<double>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Asia (Lauritzen and Spiegelhalter 1988), value 1 = true: 0 asia, 1 tub, 2 smoke, 3 lung,
// 4 bron, 5 either (tub, lung), 6 xray, 7 dysp (bron, either). `leak` makes either true with
// 0.95 when tub or lung, 0.05 otherwise, instead of the plain OR.
inline std::unique_ptr<TableNet> make_asia(bool leak) {
    const double on = leak ? 0.95 : 1.0, off = leak ? 0.05 : 0.0;
    std::vector<std::vector<int>> parents = {{}, {0}, {}, {2}, {2}, {1, 3}, {5}, {4, 5}};
    std::vector<std::vector<double>> probs = {
        bern(0.01),
        cat(bern(0.01), bern(0.05)),
        bern(0.5),
        cat(bern(0.01), bern(0.1)),
        cat(bern(0.3), bern(0.6)),
        cat(cat(bern(off), bern(on)), cat(bern(on), bern(on))),
        cat(bern(0.05), bern(0.98)),
        cat(cat(bern(0.1), bern(0.8)), cat(bern(0.7), bern(0.9))),
    };
    return std::unique_ptr<TableNet>(new TableNet(std::vector<int>(8, 2), parents, probs));
}

// One network of data/ebn/random_nets.txt with its numpy posteriors.
struct RefNet {
    std::vector<int> cards;
    std::vector<std::vector<int>> parents;
    std::vector<std::vector<double>> cpts;
    std::map<int, int> evidence;
    std::map<int, std::vector<double>> post;
};

inline std::vector<RefNet> read_ref_nets(const std::string& path) {
    std::vector<RefNet> nets;
    std::ifstream in(path);
    std::string line, tag;
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        int v = 0, k = 0, x = 0;
        double p = 0;
        ls >> tag;
        if (tag == "net") {
            nets.emplace_back();
            ls >> k;
            nets.back().parents.resize(k);
            nets.back().cpts.resize(k);
        } else if (tag == "end" || nets.empty()) {
            continue;
        }
        RefNet& r = nets.back();
        if (tag == "cards")
            while (ls >> v)
                r.cards.push_back(v);
        else if (tag == "parents" && ls >> v >> k)
            while (ls >> x)
                r.parents[v].push_back(x);
        else if (tag == "cpt" && ls >> v >> k)
            while (ls >> p)
                r.cpts[v].push_back(p);
        else if (tag == "evidence" && ls >> k)
            while (ls >> v >> x)
                r.evidence[v] = x;
        else if (tag == "post" && ls >> v)
            while (ls >> p)
                r.post[v].push_back(p);
    }
    return nets;
}

// Sets the evidence, queries each of `nodes` alone (every hidden node when empty) with a counter
// JD of its card, runs the engine and returns P(node = x) per query.
template <class JD>
std::vector<std::vector<double>> run(TableNet& tn, BNInference<int>& engine, const std::map<int, int>& ev,
                                     std::list<int> nodes = {}) {
    BNInferQuery<int> q(tn.net);
    for (const auto& e : ev) {
        q.set_var_observed(e.first);
        tn.state->set_rv_state(e.first, e.second);
    }
    if (nodes.empty())
        nodes = q.get_hidden_vars();
    for (int v : nodes)
        q.add_query(std::list<int>(1, v), JD(tn.net.get_rvar_card(v)));
    engine.preproc_query(q);
    engine.infer(q);
    std::vector<std::vector<double>> out;
    for (int i = 0; i < q.get_max_query_id(); ++i) {
        JointDist<int>* p = q.get_posterior(i);
        out.emplace_back();
        for (int x = 0; x < tn.net.get_rvar_card(q.get_query(i).front()); ++x) {
            const double d = p->density(std::vector<int>(1, x));
            out.back().push_back(p->is_log_space() ? std::exp(d) : d);
        }
    }
    return out;
}

// Exact enumeration on a reference network against its numpy posteriors; the evidence stays set.
inline void expect_ref_posteriors(const RefNet& r) {
    TableNet tn(r.cards, r.parents, r.cpts);
    BNInferExactNaive exact(tn.net);
    const auto post = run<JDLogVector>(tn, exact, r.evidence);
    ASSERT_EQ(post.size(), r.post.size());
    auto want = r.post.begin();
    for (const std::vector<double>& p : post) {
        for (std::size_t x = 0; x < p.size(); ++x)
            EXPECT_NEAR(p[x], want->second[x], 1e-4) << "node " << want->first << " value " << x;
        ++want;
    }
    for (const auto& e : r.evidence)
        EXPECT_EQ(tn.state->get_rv_state(e.first), e.second) << "evidence is never overwritten";
}

#endif
