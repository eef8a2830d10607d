// StateDataSetBase: the condition-by-variable table interface, with the experiment tables that all data
// sets share; StateDataSeriesInfo, one series of experiments.
#ifndef VESK_MODEL_STATEDATASETBASE_H
#define VESK_MODEL_STATEDATASETBASE_H

#include "VarUniverse.h"

#include <cfloat>
#include <istream>
#include <list>
#include <string>
#include <vector>

class ArraysGeneSets;

// The value of a missing cell: the most negative float. Anything at or below it is missing.
constexpr float kMissingVal = -FLT_MAX;
inline bool is_missing_val(float x) { return x <= kMissingVal; }

class StateDataSeriesInfo {
public:
    std::list<int> m_members; // experiment ids, the newest at the head
    std::string m_name;
};

class StateDataSetBase {
public:
    explicit StateDataSetBase(VarUniverse& universe) : m_universe(universe) {}
    // A copy shares the array set of its source and does not own it.
    StateDataSetBase(const StateDataSetBase& src);
    StateDataSetBase& operator=(const StateDataSetBase&) = delete;
    virtual ~StateDataSetBase();

    virtual float get_var_s_state(int e, int v) const = 0;
    virtual void set_var_s_state(int e, int v, float val) = 0;
    virtual float get_var_in_state(int e, int v) const = 0;
    virtual void set_var_in_state(int e, int v, float val) = 0;
    virtual float get_var_out_state(int e, int v) const = 0;
    virtual void set_var_out_state(int e, int v, float val) = 0;
    virtual bool is_dataset_io() const = 0;
    virtual bool is_perturbed(int e, int v) const = 0;
    // The key stream (experiments) comes before the data stream (cells).
    virtual void read(std::istream& key, std::istream& data) = 0;
    virtual void read(std::istream& key, std::istream& data, float val) = 0;

    // Number of variables: the size of the universe's id table.
    int num_vars() const { return m_universe.size(); }
    // Replaces the array set by `arrays`, which the data set then owns.
    void set_arrays(ArraysGeneSets* arrays);

    VarUniverse& m_universe;
    std::vector<StateDataSeriesInfo> m_series;
    std::vector<int> m_e_series;
    std::vector<float> m_e_weight;
    int m_E = 0;
    ArraysGeneSets* m_arrays = nullptr;
    std::vector<int> m_e_array;

protected:
    // Puts experiment e into series `series`, growing the series table.
    void add_to_series(int e, int series);

    bool m_own_arrays = true;
};

#endif
