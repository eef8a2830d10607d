// DsetAssignEvalBase: the interface of the scores of a parent set, from the counts of a DsetAssign.
#ifndef VESK_STDALG_ALG_DSETASSIGNEVALBASE_H
#define VESK_STDALG_ALG_DSETASSIGNEVALBASE_H

#include "ds/DsetAssignIter.h"

#include <string>
#include <vector>

class options;

// The counts of one parent combination: rows in which the base variable takes its value 1, 2, 3.
struct DsetAssignCell {
    int c[3];
    int sum() const { return c[0] + c[1] + c[2]; }
    int max() const;
};

// One evaluator object is asked very often; it reads counts only. The iterator forms walk an
// iterator that the caller has restarted on the current assignment, and are bound to a base
// variable of three values. The matrix forms take one row per parent combination and one column
// per value of the base variable, with `n` the number of parents.
class DsetAssignEvalBase {
public:
    // Reads the int `Logit` (required) of `scope`: non-zero traces each cell on the error stream.
    DsetAssignEvalBase(options& opt, const std::string& scope);
    virtual ~DsetAssignEvalBase();

    virtual float eval(DsetAssignIter& iter) = 0;
    virtual float eval(const std::vector<std::vector<int>>& counts, int n) = 0;

    bool m_logit;

protected:
    // The three counts at the iterator's position; a null row set counts 0.
    DsetAssignCell cell(const DsetAssignIter& iter) const;
    // The base variable's margins: the counts of ids 1, 2, 3.
    static DsetAssignCell margins(const DsetAssign& assign);
    // "Vars = " and the variables of the slots.
    static void trace_vars(const DsetAssign& assign);

    // Mutual information in nats of the base variable and the parent combination, rounded to float
    // at each step; `cells` the cells visited, empty ones included. With `check_total`, cells that
    // don't hold every row are fatal from `src`.
    float minfo(DsetAssignIter& iter, int& cells, bool check_total, const char* src) const;
    // The same on a count matrix: `N` the sum of all entries, the margins its column sums, `rows`
    // the rows that are not empty, `col_sums` the margins.
    static float minfo(const std::vector<std::vector<int>>& counts, int& rows, int& N,
                       std::vector<long long>& col_sums);
};

#endif
