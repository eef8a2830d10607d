// Shared inputs of the model tests: the small universe and data set under data/model/ and its cells.
#ifndef VESK_TESTS_MODEL_MODELTESTUTIL_H
#define VESK_TESTS_MODEL_MODELTESTUTIL_H

#include "StateDataSetReal.h"
#include "TestSupport.h"
#include "VarUniverse.h"
#include "options.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

inline std::string model_data(const std::string& name) { return source_dir() + "/data/model/" + name; }

using Params = std::map<std::string, std::string>;

// The five genes of varob_long.tab (ids 0..4), read quietly.
inline void load_small_universe(VarUniverse& u) {
    std::ifstream in(model_data("varob_long.tab").c_str()), unused;
    quiet([&] { u.read_tabs(in, unused); });
    ASSERT_EQ(u.size(), 5);
}

// Reads the key-and-data pair of the small data set into ds, passing on the default value if one is given.
template <class DS, class... Dflt> void read_small_pair(DS& ds, Dflt... dflt) {
    std::ifstream key(model_data("small_tab/expk.txt").c_str());
    std::ifstream data(model_data("small_tab/expr.txt").c_str());
    ds.read(key, data, dflt...);
}

// The small data set, variables by experiments A, B, C, worked out by hand from the tables
// (see data/model/README.md). NA is a missing cell.
constexpr float NA = kMissingVal;
constexpr float kSmall[5][3] = {
    {1.0f, 2.0f, -1.5f}, {0.5f, NA, 4.0f}, {-2.0f, 0.25f, 3.0f}, {8.0f, -0.5f, NA}, {0.75f, 1.5f, -3.0f}};

// Checks that columns first_col .. first_col + 2 of `get(e, v)` hold the small data set.
template <class Get> void expect_small_cells(Get get, int first_col) {
    for (int v = 0; v < 5; ++v)
        for (int e = 0; e < 3; ++e) {
            SCOPED_TRACE("v " + std::to_string(v) + " e " + std::to_string(e));
            EXPECT_EQ(get(first_col + e, v), kSmall[v][e]);
        }
}

// A store read from `text`. Arrays handed out by a store are never freed, so the stores of the tests live
// to the end of the process, where they stay reachable.
inline options& test_options(const std::string& text) {
    static std::vector<options*>* keep = new std::vector<options*>;
    keep->push_back(new options);
    std::istringstream in(text);
    keep->back()->read(in, false);
    return *keep->back();
}

// A data set over `nv` anonymous genes whose cells are given row by row (NA for missing).
struct Grid {
    Grid(int nv, int ne, const std::vector<float>& vals) {
        quiet([&] { u.init_idspace(nv); });
        ds.set_max_eid(ne, NA);
        int i = 0;
        for (float x : vals)
            ds.m_data(i / ne, i % ne) = x, ++i;
    }
    float at(int v, int e) const { return ds.get_var_s_state(e, v); }
    VarUniverse u;
    StateDataSetReal ds{u};
};

#endif
