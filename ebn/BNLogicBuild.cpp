// The two builders of networks from logic tables.
#include "BNLogicBuild.h"

#include "LDSoftLogic.h"
#include "LDTable.h"
#include "error.h"

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <vector>

static constexpr char kSrc[] = "BNLogicBuild";

namespace {

typedef std::map<std::string, std::string> AttrMap;

// What the attribute table says about the variables 0..n-1.
struct VarLogicAttrs {
    std::vector<int> regulators; // rvids, in key order
    int logic_id;
    float prior;
};

int add_missing_nodes(BNet<int>& net, std::istream& nodes) {
    int count = 0, unused = 0, vid = 0, card = 0;
    while (nodes >> unused >> vid >> card) {
        const int r = net.get_rvid(vid);
        if (r < 0 || r >= net.get_nodes_num() || net.get_vid(r) != vid)
            net.add_rand_var(vid, card);
        ++count;
    }
    std::cerr << "read " << count << " nodes " << std::endl;
    return count;
}

// The first value of each record by rvid and key: the one the keys are looked up in. The plain
// form's records hold three values, the consistency form's two; the others are read by no key.
std::vector<AttrMap> read_attrs(const Net& net, std::istream& attrs, int values) {
    std::vector<AttrMap> first(net.get_nodes_num());
    int vid = 0, count = 0;
    std::string key, v1, v2, v3;
    while (attrs >> vid >> key >> v1 >> v2 && (values < 3 || attrs >> v3)) {
        if (values < 3)
            std::cerr << "attrs " << key << " " << v1 << std::endl;
        ++count;
        const int r = net.get_rvid(vid);
        if (r < 0) {
            std::cerr << "attribute " << key << " of unknown vid " << vid << " skipped" << std::endl;
            continue;
        }
        first[r][key] = v1;
    }
    std::cerr << "done read attrib " << count << std::endl;
    return first;
}

// The regulators of each variable; the edges are left to the caller.
std::vector<std::vector<int>> read_regulators(const Net& net, const std::vector<AttrMap>& attrs, int n) {
    std::vector<std::vector<int>> regs(n);
    for (int r = 0; r < n; ++r) {
        for (int k = 0;; ++k) {
            auto it = attrs[r].find("regulator" + std::to_string(k));
            if (it == attrs[r].end())
                break;
            const int vid = static_cast<int>(std::strtol(it->second.c_str(), nullptr, 10));
            const int p = net.get_rvid(vid);
            if (p < 0) {
                std::cerr << "regulator " << vid << " of node " << r << " is no node, skipped" << std::endl;
                continue;
            }
            regs[r].push_back(p);
        }
    }
    return regs;
}

// The logic id and the prior of variable r; fatal without "in_logic".
void read_logic_and_prior(const AttrMap& attrs, int r, float default_noise, VarLogicAttrs& out) {
    auto it = attrs.find("in_logic");
    if (it == attrs.end())
        VESK_FATAL(kSrc, "ERROR no back logic attrib for node " << r);
    out.logic_id = static_cast<int>(std::strtol(it->second.c_str(), nullptr, 10));
    std::cerr << "in_logic of " << r << " is " << out.logic_id << std::endl;
    it = attrs.find("uniform_prior");
    out.prior = it == attrs.end() ? default_noise : std::strtof(it->second.c_str(), nullptr);
}

// card^(parents + 1), saturating past the thresholds' range.
long long table_span(int card, int parents) {
    long long s = 1;
    for (int k = 0; k <= parents && s <= 1000000000LL; ++k)
        s *= card;
    return s;
}

} // namespace

void build_bnet_from_logic_with_disp_ldtabs(BNet<int>& net, BNStateDispatch<int>& state, std::istream& nodes,
                                            std::istream& attrs, float default_noise, LocalLogicSet& logic,
                                            LocalDistSet<int>& dists) {
    net.set_state_ref(state);
    const int n = add_missing_nodes(net, nodes);
    state.reset();
    const std::vector<AttrMap> amap = read_attrs(net, attrs, 3);
    const std::vector<std::vector<int>> regs = read_regulators(net, amap, n);
    std::vector<VarLogicAttrs> var_logic(n);
    for (int r = 0; r < n; ++r) {
        for (int p : regs[r])
            net.insert_edge(p, r, -1);
        read_logic_and_prior(amap[r], r, default_noise, var_logic[r]);
    }
    BNState<int> scratch(net);
    scratch.reset_all(0);
    for (int r = 0; r < n; ++r) {
        LocalLogicHNode* root = logic.get_node(var_logic[r].logic_id);
        LocalDist<int>* ld = nullptr;
        if (table_span(net.get_rvar_card(r), static_cast<int>(regs[r].size())) <= 10000) {
            LDSoftLogic* soft = new LDSoftLogic(net, state, r);
            soft->set_root(root);
            soft->set_uniform_prior(var_logic[r].prior);
            ld = soft;
        } else {
            LDTableDispatch* tab = new LDTableDispatch(net, state, r);
            tab->cache_from_hnode(*root, var_logic[r].prior, scratch);
            ld = tab;
        }
        net.set_ldist(r, ld);
        dists.add_ld(ld);
    }
}

void build_fbn_from_logic_with_disp_ldtabs(BNet<int>& net, BNStateDispatch<int>& state, std::istream& nodes,
                                           std::istream& attrs, float default_noise, LocalLogicSet& logic,
                                           LocalDistSet<int>& dists) {
    net.set_state_ref(state);
    const int n = add_missing_nodes(net, nodes);
    const std::vector<AttrMap> amap = read_attrs(net, attrs, 2);
    // Regulators are resolved before the added nodes, whose vids are their rvids, can shadow a
    // variable's vid.
    const std::vector<std::vector<int>> regs = read_regulators(net, amap, n);
    while (net.get_nodes_num() < 3 * n)
        net.add_rand_var(net.get_nodes_num(), 2);
    state.reset();
    std::vector<VarLogicAttrs> var_logic(n);
    for (int i = 0; i < n; ++i) {
        std::cerr << "add edges from " << i << std::endl;
        net.insert_edge(i, n + i, -1);
        net.insert_edge(i, 2 * n + i, -1);
        for (int p : regs[i])
            net.insert_edge(p, n + i, -1);
        read_logic_and_prior(amap[i], i, default_noise, var_logic[i]);
    }
    BNState<int> scratch(net);
    scratch.reset_all(0);
    for (int i = 0; i < n; ++i) {
        LocalLogicHNode* root = logic.get_node(var_logic[i].logic_id);
        LocalDist<int>* ld = nullptr;
        if (table_span(net.get_rvar_card(i), static_cast<int>(regs[i].size())) < 10000) {
            LDTableDispatch* tab = new LDTableDispatch(net, state, n + i);
            tab->cache_consist_from_hnode(*root, i, var_logic[i].prior, scratch);
            ld = tab;
        } else {
            LDConsistSoftLogic* soft = new LDConsistSoftLogic(net, state, n + i);
            soft->set_logic(root);
            soft->set_logic_out_var(i);
            soft->set_consist_prior(var_logic[i].prior);
            ld = soft;
        }
        net.set_ldist(n + i, ld);
        dists.add_ld(ld);
    }
}
