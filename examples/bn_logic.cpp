// bn_logic: a regulatory network written as logic tables becomes a Bayesian network, in the plain
// noisy-logic form or in the form with one consistency node per variable; writes every built local
// distribution entry by entry, and in the consistency form the exact posteriors of the variables.
//
//   bn_logic <option file>      (see examples/README.md for the scopes and keys)
#include "BNInference.h"
#include "BNLogicBuild.h"
#include "BNState.h"
#include "BNet.h"
#include "ExampleIO.h"
#include "JointDist.h"
#include "LDSoftLogic.h"
#include "LDTable.h"
#include "LocalDist.h"
#include "LocalLogic.h"
#include "options.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <list>
#include <map>
#include <string>
#include <vector>

namespace {

std::string fmt(float v) {
    if (std::isnan(v))
        return "nan";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.9g", static_cast<double>(v));
    return buf;
}

const char* kind_of(const LocalDist<int>* ld, bool consist) {
    if (dynamic_cast<const LDSoftLogic*>(ld))
        return "soft";
    if (dynamic_cast<const LDConsistSoftLogic*>(ld))
        return "consist_soft";
    return consist ? "consist_table" : "table";
}

// Every configuration of the node's own value and its parents, own value fastest, the other
// nodes at 0; the state is left all zeros.
void write_local(std::ostream& out, BNet<int>& net, BNStateDispatch<int>& state, int r, bool consist) {
    const LocalDist<int>* ld = net.get_ldist(r);
    const std::vector<int> parents(net.get_parents(r).begin(), net.get_parents(r).end());
    const int card = net.get_rvar_card(r);
    int total = card;
    for (int p : parents)
        total *= net.get_rvar_card(p);
    for (int v = 0; v < net.get_nodes_num(); ++v)
        state.set_rv_state(v, 0);
    for (int ndx = 0; ndx < total; ++ndx) {
        int rest = ndx / card;
        std::string pv;
        for (std::size_t k = 0; k < parents.size(); ++k) {
            const int c = net.get_rvar_card(parents[k]);
            state.set_rv_state(parents[k], rest % c);
            pv += (k ? "," : "") + std::to_string(rest % c);
            rest /= c;
        }
        state.set_rv_state(r, ndx % card);
        out << r << "\t" << kind_of(ld, consist) << "\t" << ndx << "\t" << pv << "\t" << ndx % card << "\t"
            << fmt(ld->logp()) << "\n";
    }
    for (int v = 0; v < net.get_nodes_num(); ++v)
        state.set_rv_state(v, 0);
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "bn_logic", opts))
        return rc;
    const std::string form = opts.get_str("Logic", "Form", true);
    if (form != "plain" && form != "consist") {
        std::cerr << "Logic::Form must be plain or consist, not " << form << std::endl;
        return 1;
    }
    const bool consist = form == "consist";
    const float noise = opts.get_float("Logic", "DefaultNoise", true);

    // The variables first, so that the logic set can name them; the builder then adds only what
    // the network lacks.
    BNet<int> net;
    const std::string nodes_name = opts.get_str("Tables", "Nodes", true);
    {
        std::ifstream in;
        if (!open_in(in, nodes_name))
            return 1;
        net.add_all_nodes(in);
    }
    const int n = net.get_nodes_num();
    LocalLogicSet logic(net);
    {
        std::ifstream ln, la;
        if (!open_in(ln, opts.get_str("Tables", "LogicNodes", true)) ||
            !open_in(la, opts.get_str("Tables", "LogicAttrs", true)))
            return 1;
        logic.read(ln, la);
    }
    BNStateDispatch<int> state(net);
    LocalDistSet<int> dists;
    {
        std::ifstream nodes, attrs;
        if (!open_in(nodes, nodes_name) || !open_in(attrs, opts.get_str("Tables", "Attrs", true)))
            return 1;
        if (consist)
            build_fbn_from_logic_with_disp_ldtabs(net, state, nodes, attrs, noise, logic, dists);
        else
            build_bnet_from_logic_with_disp_ldtabs(net, state, nodes, attrs, noise, logic, dists);
    }
    // Built distributions: the variables' in the plain form, the consistency nodes' otherwise.
    const int first = consist ? n : 0;
    if (consist) {
        // Variables and companions: fresh uniform tables, made while the state is all zeros.
        for (int r = 0; r < 3 * n; ++r) {
            if (r >= n && r < 2 * n)
                continue;
            LDTableDispatch* t = new LDTableDispatch(net, state, r);
            dists.add_ld(t);
            net.set_ldist(r, t);
        }
    }
    {
        std::ofstream out(opts.get_str("Tables", "OutLocal", true));
        if (!out) {
            std::cerr << "Cannot write the local distribution table" << std::endl;
            return 1;
        }
        out << "rvid\tkind\tindex\tparents\tvalue\tlogp\n";
        for (int r = first; r < first + n; ++r)
            if (net.get_ldist(r))
                write_local(out, net, state, r, consist);
    }
    if (!consist) {
        std::cout << n << " variables, " << dists.size() << " distributions" << std::endl;
        return 0;
    }

    // Consistency nodes at 1, companions at 0, the evidence on the variables.
    BNInferQuery<int> query(net);
    for (int r = n; r < 3 * n; ++r) {
        query.set_var_observed(r);
        state.set_rv_state(r, r < 2 * n ? 1 : 0);
    }
    std::map<int, int> evidence; // rvid -> value
    const std::vector<int>* ev = opts.get_ints("Bn", "Evidence", true);
    if (ev->size() % 2) {
        std::cerr << "Bn::Evidence must hold vid-value pairs" << std::endl;
        return 1;
    }
    for (std::size_t i = 0; i < ev->size(); i += 2) {
        const int r = net.get_rvid((*ev)[i]);
        const int x = (*ev)[i + 1];
        if (r < 0 || r >= n || net.get_vid(r) != (*ev)[i] || x < 0 || x >= net.get_rvar_card(r)) {
            std::cerr << "Bad evidence " << (*ev)[i] << " = " << x << std::endl;
            return 1;
        }
        evidence[r] = x;
        query.set_var_observed(r);
        state.set_rv_state(r, x);
    }
    std::map<int, int> hidden; // vid -> rvid
    for (int r = 0; r < n; ++r)
        if (!evidence.count(r))
            hidden[net.get_vid(r)] = r;
    std::map<int, int> ids;
    for (const auto& h : hidden)
        ids[h.second] =
            query.add_query(std::list<int>(1, h.second), JDLogVector(net.get_rvar_card(h.second)));
    BNInferExactNaive engine(net);
    engine.preproc_query(query);
    engine.infer(query);

    std::ofstream out(opts.get_str("Tables", "OutPosteriors", true));
    if (!out) {
        std::cerr << "Cannot write the posterior table" << std::endl;
        return 1;
    }
    out << "vid\tvalue\texact\n";
    for (const auto& h : hidden) {
        JointDist<int>* jd = query.get_posterior(ids[h.second]);
        for (int x = 0; x < net.get_rvar_card(h.second); ++x) {
            const double d = jd->density(std::vector<int>(1, x));
            char buf[64];
            std::snprintf(buf, sizeof buf, "%.9g", jd->is_log_space() ? std::exp(d) : d);
            out << h.first << "\t" << x << "\t" << buf << "\n";
        }
    }
    std::cout << n << " variables, " << dists.size() << " distributions, " << evidence.size() << " observed, "
              << hidden.size() << " queried" << std::endl;
    return 0;
}
