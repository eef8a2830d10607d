// StateDataSetBV: discrete conditions by variables, one bit vector of experiments per variable and value.
#ifndef VESK_MODEL_STATEDATASETBV_H
#define VESK_MODEL_STATEDATASETBV_H

#include "StateDataSetBase.h"
#include "ds/BitVec.h"

#include <istream>
#include <vector>

class StateDataSetBV : public StateDataSetBase {
public:
    // `card` is the number of values a variable can take.
    StateDataSetBV(VarUniverse& universe, int card);
    ~StateDataSetBV() override;
    StateDataSetBV(const StateDataSetBV&) = delete;

    float get_var_s_state(int e, int v) const override { return get_var_in_state(e, v); }
    void set_var_s_state(int e, int v, float val) override { set_var_in_state(e, v, val); }
    // The value of v whose vector has bit e; fatal if there is none.
    float get_var_in_state(int e, int v) const override;
    // Moves v to value `val` (a whole number below m_card) in experiment e.
    void set_var_in_state(int e, int v, float val) override;
    // The out state, kept apart only when the data set is in-out; else the in state.
    float get_var_out_state(int e, int v) const override;
    void set_var_out_state(int e, int v, float val) override;
    bool is_dataset_io() const override { return m_is_io; }
    // Bit v of the perturbation vector of e; false where there is none.
    bool is_perturbed(int e, int v) const override;

    // Experiment key and discrete cells (expd); a cell takes the last value whose probability reaches
    // `threshold`.
    void read(std::istream& key, std::istream& data, float threshold) override;
    void read(std::istream& key, std::istream& data) override { read(key, data, 1.0f); }
    // Resizes every vector to num_e experiments; new experiments hold value 0.
    void set_max_eid(int num_e, bool io);
    // Whether every variable has exactly one value in every experiment; says why not on the error stream.
    bool verify() const;

    int m_card;
    std::vector<ds_bitvec*> m_map;
    std::vector<ds_bitvec*> m_out_map;
    bool m_is_io = false;
    std::vector<ds_bitvec*> m_pert;

private:
    float get_state(const std::vector<ds_bitvec*>& map, int e, int v) const;
    void set_state(std::vector<ds_bitvec*>& map, int e, int v, float val);
    void fit_exp_tables(int n);
    static void free_map(std::vector<ds_bitvec*>& map);
};

#endif
