// Shared fixtures of the bic tests: a value space driven by a probability table, option stores from
// text, small data sets from inline tables, graphs built by hand.
#ifndef VESK_TESTS_BIC_BICTESTUTIL_H
#define VESK_TESTS_BIC_BICTESTUTIL_H

#include "ExpVarGraphACO.h"
#include "StateDataSetReal.h"
#include "TestSupport.h"
#include "ds/BitVec.h"
#include "options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

// A data value is a row code: row r gives the probability of each state (state 0 is the zero state).
// Values outside the table read as row 0.
class TableValSpace : public ValSpaceBase {
public:
    explicit TableValSpace(std::vector<std::vector<float>> rows) : m_rows(std::move(rows)) {}
    float get_val_state_prob(int s, float v) const override { return m_rows[row(v)][s]; }
    int get_state_of_val(float v) const override { return row(v) == 0 ? 0 : 1; }

private:
    int row(float v) const {
        return v >= 0.0f && v < static_cast<float>(m_rows.size()) ? static_cast<int>(v) : 0;
    }
    std::vector<std::vector<float>> m_rows;
};

// A store read from `text`; stores live to the end of the process (their arrays are shared).
inline options& bic_options(const std::string& text) {
    static std::vector<options*>* keep = new std::vector<options*>;
    keep->push_back(new options);
    std::istringstream in(text);
    keep->back()->read(in, false);
    return *keep->back();
}

// `text` without the line of `key`.
inline std::string without_key(std::string text, const std::string& key) {
    const size_t at = text.find(key + " = ");
    return text.erase(at, text.find('\n', at) - at + 1);
}

// Swallows the error stream while alive; death tests must not use it (they read that stream).
struct Quiet {
    explicit Quiet(bool on = true) : m_on(on) {
        if (on)
            testing::internal::CaptureStderr();
    }
    std::string done() {
        std::string s = m_on ? testing::internal::GetCapturedStderr() : "";
        m_on = false;
        return s;
    }
    ~Quiet() { done(); }
    bool m_on;
};

// `genes` anonymous genes, a value space, and a data set from an experiment key (id, name, ignored,
// series, weight, array type) and cells (variable, experiment, value; absent cells are 0).
struct BicData {
    BicData(int genes, ValSpaceBase* vs, const std::string& key, const std::string& cells, bool quiet = true)
        : universe(vs), data(universe) {
        Quiet q(quiet);
        universe.init_idspace(genes);
        std::istringstream k(key), c(cells);
        data.read(k, c, 0.0f);
    }
    VarUniverse universe;
    StateDataSetReal data;
};

// An experiment key of `conds` conditions c0, c1, ... of series 0, weight 1, array type 0.
inline std::string cond_key(int conds) {
    std::string k;
    for (int c = 0; c < conds; ++c)
        k += std::to_string(c) + " c" + std::to_string(c) + " x 0 1 0\n";
    return k;
}

typedef std::vector<std::tuple<int, int, float>> Edges;

// Edges from text, "source-destination" for weight 1 or "source-destination:weight", space separated.
inline Edges edges_of(const std::string& text) {
    Edges out;
    std::istringstream in(text);
    for (std::string t; in >> t;) {
        int s = 0, d = 0;
        float w = 1.0f;
        char c = 0;
        std::istringstream f(t);
        f >> s >> c >> d >> c >> w;
        out.emplace_back(s, d, w);
    }
    return out;
}

// A bit vector of `width` bits with `ids` set.
inline ds_bitvec id_set(const std::vector<int>& ids, int width) {
    ds_bitvec s(width);
    for (int i : ids)
        s.set_ind(i);
    return s;
}

inline std::vector<int> ints(const std::string& text) {
    std::vector<int> out;
    std::istringstream in(text);
    for (int x; in >> x;)
        out.push_back(x);
    return out;
}

// A graph built by hand on `d`: condition nodes by group, variable nodes by group (ids in order),
// then edges (source, destination, weight) with state 1. Nothing is read under scope "Default".
inline ExpVarGraphACO* hand_graph(BicData& d, const std::vector<int>& exp_groups,
                                  const std::vector<int>& var_groups, const Edges& edges,
                                  int max_var_group = 0) {
    Quiet q;
    ExpVarGraphACO* g = new ExpVarGraphACO(d.universe, d.data, bic_options(""), "Default", false);
    g->allocate_max_var_group(max_var_group);
    std::vector<int> next(64, 0);
    for (int grp : exp_groups)
        g->add_exp_node_to_group(grp, next[grp]++);
    next.assign(64, 0);
    for (int grp : var_groups)
        g->add_var_node_to_group(grp, next[grp]++);
    for (const auto& e : edges)
        g->add_edge(std::get<0>(e), std::get<1>(e), 1, std::get<2>(e));
    return g;
}

#endif
