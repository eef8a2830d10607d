// BicSet: a list of biclusters by id, read from and written to the bick and bicd tables.
#ifndef VESK_BIC_BICSET_H
#define VESK_BIC_BICSET_H

#include "DynBiclust.h"
#include "ds/BitVec.h"

#include <fstream>
#include <istream>
#include <string>
#include <vector>

// Opens a bick and a bicd file for reading; says which one can't be opened.
bool open_bic_files(const std::string& bick, const std::string& bicd, std::ifstream& k, std::ifstream& d);

// bick: id and score a line; bicd: id, 0 (condition) or 1 (variable), condition or variable id,
// group, margin a line. Any white space separates; reading stops at the first token that doesn't
// parse. Written through ExpVarBiclust::dump_to_tables. A bicluster's members are found through the
// graph's group tables, so a set is read against the graph it was written from. bicm: id, pattern
// (or "none"), from, to a line; reading stops at the first token that isn't an id, so a file with
// more columns stops after its first line.
class BicSet {
public:
    BicSet(const ExpVarGraphBase& graph, WgtSchemeBase& wgt);

    // True if both files opened.
    bool read(const std::string& bick, const std::string& bicd);
    void read(std::istream& bick, std::istream& bicd);
    // True if the file opened. Patterns are parsed as letter patterns and kept as their text (digits
    // expanded to '*'); every bicluster without a line has "none" and -1, -1.
    bool read_bicm(const std::string& bicm);
    void read_bicm(std::istream& bicm);
    // Makes bicluster `id` (growing the set if needed) the conditions `exps[i]` in groups
    // `exp_groups[i]` and the variables of `vars` in `var_group`, active, with the given pattern.
    void replace_bic(int id, const std::vector<int>& exps, const std::vector<int>& exp_groups,
                     const ds_bitvec& vars, int var_group, const std::string& pattern, int from, int to);

    int size() const { return static_cast<int>(m_bics.size()); }

    const ExpVarGraphBase& m_graph;
    WgtSchemeBase& m_wgt;
    std::vector<ExpVarBiclust> m_bics;
    ds_bitvec m_active;
    std::vector<float> m_scores;
    std::vector<std::string> m_patterns;
    std::vector<int> m_pat_from;
    std::vector<int> m_pat_to;

private:
    // Grows every per-id table to `count` entries with empty biclusters and the fillers.
    void grow_to(int count);
};

#endif
