// PropMatrix: real property values by variable, read from text, tab or gxp tables, with normalisations.
#ifndef VESK_BIC_PROPMATRIX_H
#define VESK_BIC_PROPMATRIX_H

#include "VarUniverse.h"

#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <vector>

// Properties are rows (m_values[prop][var]); every reader appends its properties after the ones
// already held, so several tables make one matrix. Missing values are kMissing.
class PropMatrix {
public:
    // How a property's values were read: the reader's type; m_modes keeps one per property.
    enum PropMode { kTxt = 0, kTab = 1, kGxp = 2 };
    static constexpr float kMissing = -3.4028235e+38f;

    explicit PropMatrix(const VarUniverse& universe) : m_universe(universe) {}

    // "txt", "tab", "gxp" call their reader; "geo" and any other type do nothing.
    void read(const std::string& type, std::map<std::string, std::string>& params);
    void read_txt(std::map<std::string, std::string>& params);
    void read_tab(std::map<std::string, std::string>& params);
    // Header handling: the first line after "<TSCRawData>" names the columns (first_data_col label
    // columns, then one property per column); rows follow until "</TSCRawData>". Lines before the
    // opening tag are skipped. The row key is in key_col (default 0), data from first_data_col (1).
    void read_gxp(std::map<std::string, std::string>& params);

    void dump_expk(std::ostream& out) const;
    // Population mean and standard deviation (long double) per property (per variable over the
    // properties) from `first`; each present value becomes (x - mean) / sd.
    void prop_normalize(int first);
    void gene_normalize(int first);
    // Row `base` subtracted from every row from `first`, element by element, missing or not.
    void substract_cond(int first, int base);

    int prop_num() const { return static_cast<int>(m_values.size()); }

    const VarUniverse& m_universe;
    std::vector<std::vector<float>> m_values; // property by variable
    std::vector<std::string> m_names;
    std::vector<PropMode> m_modes;
    std::vector<int> m_prop_keys; // by property: the order of the table among the tables read
    std::vector<int> m_prop_ext_ids;

private:
    // A new property row of missing values; returns its index.
    int add_prop(const std::string& name, PropMode mode, float fill);
    // Header at `line`, then rows from `in` until the stream ends or a line equals `stop`;
    // returns the number of matched rows and the number of unmatched ones.
    void read_rows(std::istream& in, const std::string& header, const std::string& stop,
                   std::map<std::string, std::string>& params, PropMode mode, int& match, int& nomatch);
    int match_var(const std::string& name) const;
    int m_tables = 0;
};

#endif
