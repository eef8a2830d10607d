// Timed driver of the Gibbs sampler on the leaky Asia network with asia = xray = dysp = true:
// exact posteriors by enumeration, then BNInferGibbs with the given repeats and steps, its wall
// and CPU time, the posteriors and their largest distance from exact.
//
//   bn_gibbs_bench <GibbsRepeats> <GibbsT> [seed]      (bench/run_bn_bench.py runs it beside JAGS)
#include "BNInference.h"
#include "BNState.h"
#include "BNet.h"
#include "JointDist.h"
#include "LDTable.h"
#include "LocalDist.h"
#include "Random.h"
#include "options.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

const char* kNames[] = {"asia", "tub", "smoke", "lung", "bron", "either", "xray", "dysp"};

void build(BNet<int>& net, std::unique_ptr<BNStateDispatch<int>>& state, LocalDistSet<int>& dists) {
    for (int v = 0; v < 8; ++v)
        net.add_rand_var(v, 2);
    const int edges[][2] = {{0, 1}, {2, 3}, {2, 4}, {1, 5}, {3, 5}, {5, 6}, {4, 7}, {5, 7}};
    for (const auto& e : edges)
        net.insert_edge(e[0], e[1], -1);
    state.reset(new BNStateDispatch<int>(net));
    net.set_state_ref(*state);
    const std::vector<std::vector<float>> probs = {
        {0.99f, 0.01f},
        {0.99f, 0.01f, 0.95f, 0.05f},
        {0.5f, 0.5f},
        {0.99f, 0.01f, 0.9f, 0.1f},
        {0.7f, 0.3f, 0.4f, 0.6f},
        {0.95f, 0.05f, 0.05f, 0.95f, 0.05f, 0.95f, 0.05f, 0.95f},
        {0.95f, 0.05f, 0.02f, 0.98f},
        {0.9f, 0.1f, 0.2f, 0.8f, 0.3f, 0.7f, 0.1f, 0.9f},
    };
    for (int v = 0; v < 8; ++v) {
        LDTableDispatch* t = new LDTableDispatch(net, *state, v);
        std::vector<float> logs;
        for (float p : probs[v])
            logs.push_back(logf(p));
        t->set_table(logs);
        net.set_ldist(v, t);
        dists.add_ld(t);
    }
}

// P(node = 1) for every hidden node, evidence asia = xray = dysp = 1.
std::vector<double> run(BNet<int>& net, BNInference<int>& engine, bool log_space) {
    for (int v = 0; v < 8; ++v)
        net.get_state().set_rv_state(v, 0);
    BNInferQuery<int> q(net);
    for (int v : {0, 6, 7}) {
        q.set_var_observed(v);
        net.get_state().set_rv_state(v, 1);
    }
    const std::list<int> hidden = q.get_hidden_vars();
    for (int v : hidden) {
        if (log_space)
            q.add_query(std::list<int>(1, v), JDLogVector(2));
        else
            q.add_query(std::list<int>(1, v), JDVector(2));
    }
    engine.preproc_query(q);
    engine.infer(q);
    std::vector<double> out;
    for (int i = 0; i < q.get_max_query_id(); ++i) {
        const double d = q.get_posterior(i)->density(std::vector<int>(1, 1));
        out.push_back(log_space ? std::exp(d) : d);
    }
    return out;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: bn_gibbs_bench <GibbsRepeats> <GibbsT> [seed]\n");
        return 2;
    }
    Random::reset(argc > 3 ? std::atoi(argv[3]) : 1);
    BNet<int> net;
    // The state is declared first so that it outlives the distributions subscribed to it.
    std::unique_ptr<BNStateDispatch<int>> state;
    LocalDistSet<int> dists;
    build(net, state, dists);

    BNInferExactNaive exact(net);
    const std::vector<double> want = run(net, exact, true);

    options opts;
    std::istringstream in(std::string("[G]\nGibbsRepeats = ") + argv[1] + "\nGibbsT = " + argv[2] +
                          "\nLogit = 0\n");
    opts.read(in, false);
    BNInferGibbs gibbs(net, opts, "G");
    const std::clock_t c0 = std::clock();
    const auto t0 = std::chrono::steady_clock::now();
    const std::vector<double> got = run(net, gibbs, false);
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double cpu = static_cast<double>(std::clock() - c0) / CLOCKS_PER_SEC;

    double worst = 0;
    const int hidden[] = {1, 2, 3, 4, 5};
    for (std::size_t i = 0; i < got.size(); ++i) {
        std::printf("%s\t%.6f\t%.6f\n", kNames[hidden[i]], got[i], want[i]);
        worst = std::max(worst, std::fabs(got[i] - want[i]));
    }
    std::printf("updates\t%ld\nwall_s\t%.4f\ncpu_s\t%.4f\nmax_err\t%.6f\n",
                static_cast<long>(std::atol(argv[1])) * std::atol(argv[2]), wall, cpu, worst);
    return 0;
}
