// StateDataSetReal: real-valued conditions by variables, with the readers of all expression table formats
// and their normalisations.
#ifndef VESK_MODEL_STATEDATASETREAL_H
#define VESK_MODEL_STATEDATASETREAL_H

#include "Matrix.h"
#include "StateDataSetBase.h"
#include "ds/BitVec.h"

#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <vector>

class StateDataSetReal : public StateDataSetBase {
public:
    explicit StateDataSetReal(VarUniverse& universe) : StateDataSetBase(universe) {}

    // All three states are the cell at (row v, column e).
    float get_var_s_state(int e, int v) const override { return m_data(v, e); }
    float get_var_in_state(int e, int v) const override { return m_data(v, e); }
    float get_var_out_state(int e, int v) const override { return m_data(v, e); }
    // The setters write the cell. An experiment id not below the row count (which counts variables)
    // first grows the matrix to e + 1 rows of 0.0; a cell still outside the matrix is not written.
    void set_var_s_state(int e, int v, float val) override { set_cell(e, v, val); }
    void set_var_in_state(int e, int v, float val) override { set_cell(e, v, val); }
    void set_var_out_state(int e, int v, float val) override { set_cell(e, v, val); }
    bool is_dataset_io() const override { return false; }
    // Bit v of row e of m_pert; false where m_pert has no such bit.
    bool is_perturbed(int e, int v) const override;

    // Experiment key (expk) and cells (expr); absent cells get `default_val`.
    void read(std::istream& key, std::istream& data, float default_val) override;
    void read(std::istream& key, std::istream& data) override { read(key, data, 0.0f); }
    // A new array set from arrk/arrd, then read().
    void read_multi(std::istream& key, std::istream& data, std::istream& arrk, std::istream& arrd,
                    float default_val);
    // One wide tab-separated table, its columns appended to the experiments already present.
    void read_txt(std::map<std::string, std::string>& params, int key_id = 0);
    // Dispatch on the table type: "txt", "tab" (a directory with expk.txt and expr.txt), "geo".
    void read_key(const std::string& type, std::map<std::string, std::string>& params, int key_id = 0);
    // A file of key lines: id, type, a separator, then tab-separated key/value pairs.
    void read_prop_key(const std::string& file);
    // A plain matrix: per line a label and num_cols values separated by single blanks.
    void read_mat(std::istream& in, int num_cols);

    // Array types from the missing values: one per distinct pattern (one_type 0) or a single one.
    void calc_array_type(int one_type);
    // Standardises (or only centres) each experiment from first_e on.
    void cond_standartize(bool just_mean, int first_e);
    // Standardises each variable over the experiments from first_e on.
    void gene_standartize(bool take_log, int first_e);
    // Subtracts column ref_e from each variable's cells from first_e on.
    void gene_norm_by_ref(int ref_e, int first_e);
    void set_max_eid(int num_e, float fill);
    void reset() { m_data.resize(0, 0, 0.0f); }
    // One line per experiment: the id, a tab, the name.
    void dump_expk(std::ostream& out) const;

    Matrix<float> m_data;          // variables by experiments
    std::vector<ds_bitvec> m_pert; // per experiment, the perturbed variables
    std::vector<std::string> m_e_names;
    std::vector<int> m_e_key;

protected:
    void set_cell(int e, int v, float val);
    // The cell, or the missing value outside the matrix.
    float cell(int v, int e) const {
        return v < m_data.rows() && e < m_data.cols() ? m_data(v, e) : kMissingVal;
    }
    // Whether the array type of experiment e measures v; true without an array set or a known type.
    bool measured(int e, int v) const;
    // Sizes the per-experiment tables to n, new entries series 0, name empty and the given fills.
    void fit_exp_tables(int n, float weight_fill, int array_fill);
    // Variable id of a wide-table key through the universe's maps, -1 if none.
    int match_name(const std::string& key) const;

    // How a wide table is read: its keys, and whether row keys are variable ids (a first header
    // field "Var_id"); `base` is the first experiment of the table.
    struct TxtLayout {
        int take_log = 0;
        int key_col = 0;
        int first_data_col = 1;
        bool is_affy = false;
        bool click = false;
        bool var_ids = false;
        int base = 0;
    };
    // The steps of read_txt: one experiment per named header column (or `cols` of a click header);
    // the rows matched to variables, returning their count; the normalisations asked for.
    void read_txt_header(std::istream& in, TxtLayout& t, int key_id);
    int read_txt_rows(std::istream& in, const TxtLayout& t);
    void normalise_txt(std::map<std::string, std::string>& params, int base);
    // A new experiment of the table in series 0, weight 1, no array.
    void append_txt_exp(const std::string& name, int key);
};

#endif
