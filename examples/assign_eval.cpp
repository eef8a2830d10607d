// assign_eval: scores candidate parent sets of one variable of a discrete table. Walks the empty set
// and then every subset of up to MaxParents candidates through a DsetAssign kept in step by a subset
// iterator, and writes each evaluator's score from the row-set lattice and from a count table.
//
//   assign_eval <option file>      (see examples/README.md for the scopes and keys)
#include "ExampleIO.h"
#include "alg/DsetAssignEvalFact.h"
#include "ds/DsetAssign.h"
#include "ds/DsetAssignIter.h"
#include "ds/IdDSetIter.h"
#include "options.h"

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

const char kScope[] = "Eval";

// A white-space table: a line of names, then one row per sample of values 0..2, -1 for missing.
struct Table {
    std::vector<std::string> names;
    std::vector<std::vector<int>> rows;
};

bool read_table(const std::string& path, Table& t) {
    std::ifstream in(path);
    if (!in) {
        std::cerr << "Cannot open " << path << std::endl;
        return false;
    }
    std::string line;
    if (!std::getline(in, line)) {
        std::cerr << path << ": no header line" << std::endl;
        return false;
    }
    std::istringstream head(line);
    for (std::string n; head >> n;)
        t.names.push_back(n);
    for (int lineno = 2; std::getline(in, line); ++lineno) {
        std::istringstream fields(line);
        std::vector<int> row;
        std::string f;
        while (fields >> f) {
            char* end = nullptr;
            const long v = std::strtol(f.c_str(), &end, 10);
            if (*end != '\0' || v < -1 || v > 2) {
                std::cerr << path << ":" << lineno << ": value " << f << " is not one of -1, 0, 1, 2"
                          << std::endl;
                return false;
            }
            row.push_back(static_cast<int>(v));
        }
        if (row.empty())
            continue;
        if (row.size() != t.names.size()) {
            std::cerr << path << ":" << lineno << ": " << row.size() << " values for " << t.names.size()
                      << " columns" << std::endl;
            return false;
        }
        t.rows.push_back(row);
    }
    return true;
}

// Keeps the parent slots of the assignment equal to the current subset: position j is slot j + 1.
class ParentWalk : public IdDSetIter {
public:
    ParentWalk(int k, DsetAssign& assign, const std::vector<DsetValueSets>& sets)
        : IdDSetIter(k), m_assign(assign), m_sets(sets) {}
    void on_add_to_set(int position, int id) override {
        m_assign.insert_var_at(id, m_sets[id], position + 1);
    }
    void on_remove_from_set(int position, int) override { m_assign.remove_i_var(position + 1); }

private:
    DsetAssign& m_assign;
    const std::vector<DsetValueSets>& m_sets;
};

// Counts of the base values per parent combination, 3^k rows with the first parent the lowest
// digit; rows with a missing value among base and parents are left out.
std::vector<std::vector<int>> count_table(const Table& t, int base, const std::vector<int>& parents) {
    std::size_t size = 1;
    for (std::size_t i = 0; i < parents.size(); ++i)
        size *= 3;
    std::vector<std::vector<int>> counts(size, std::vector<int>(3, 0));
    for (const std::vector<int>& row : t.rows) {
        if (row[base] < 0)
            continue;
        std::size_t idx = 0, w = 1;
        bool ok = true;
        for (int p : parents) {
            ok = ok && row[p] >= 0;
            idx += w * static_cast<std::size_t>(row[p] < 0 ? 0 : row[p]);
            w *= 3;
        }
        if (ok)
            ++counts[idx][row[base]];
    }
    return counts;
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "assign_eval", opts))
        return rc;
    Table table;
    if (!read_table(opts.get_str("Tables", "Data", true), table))
        return 1;
    const int ncols = static_cast<int>(table.names.size());
    const int nrows = static_cast<int>(table.rows.size());
    auto in_range = [&](int c) { return c >= 0 && c < ncols; };

    const int base = opts.get_int(kScope, "Base", true);
    const int max_parents = opts.get_int(kScope, "MaxParents", true);
    if (!in_range(base) || max_parents < 0 || max_parents > 10) {
        std::cerr << "Eval::Base must be a column and Eval::MaxParents within 0..10" << std::endl;
        return 1;
    }
    ds_bitvec allowed(ncols);
    if (const std::vector<int>* cand = opts.get_ints(kScope, "Candidates", false)) {
        for (int c : *cand) {
            if (!in_range(c)) {
                std::cerr << "Candidate " << c << " is not a column" << std::endl;
                return 1;
            }
            allowed.set_ind(c);
        }
    } else {
        allowed.set(true);
    }
    allowed.clr_ind(base);
    std::vector<int> forced, choice;
    for (auto [name, list] : {std::make_pair("Forced", &forced), std::make_pair("Choice", &choice)}) {
        if (const std::vector<int>* v = opts.get_ints(kScope, name, false))
            *list = *v;
        for (int c : *list) {
            if (!in_range(c) || c == base) {
                std::cerr << name << " id " << c << " is not a column other than the base" << std::endl;
                return 1;
            }
        }
    }
    const std::vector<std::string>* types = opts.get_strs(kScope, "Types", true);

    std::vector<std::unique_ptr<DsetAssignEvalBase>> evals;
    for (const std::string& t : *types)
        evals.emplace_back(dset_assign_eval_gen().make(t.c_str(), opts, kScope));

    // Row sets of every value of every column.
    std::vector<std::vector<std::unique_ptr<ds_bitvec>>> owned(ncols);
    std::vector<DsetValueSets> sets(ncols);
    for (int c = 0; c < ncols; ++c) {
        for (int v = 0; v < 3; ++v) {
            owned[c].emplace_back(new ds_bitvec(nrows));
            for (int r = 0; r < nrows; ++r)
                if (table.rows[r][c] == v)
                    owned[c][v]->set_ind(r);
            sets[c].push_back(owned[c][v].get());
        }
    }

    MultiDimIdSpace space(2, max_parents + 1);
    DsetAssign assign(space, 3, max_parents + 1, nrows, false);
    assign.insert_base_var(base, sets[base]);

    const std::string out_path = opts.get_str("Tables", "OutScores", true);
    std::ofstream out(out_path);
    if (!out) {
        std::cerr << "Cannot write " << out_path << std::endl;
        return 1;
    }
    out << "parents";
    for (const std::string& t : *types)
        out << '\t' << t << '\t' << t << "_m";
    out << '\n' << std::setprecision(9);

    int lines = 0;
    auto score = [&](const std::vector<int>& parents) {
        if (parents.empty())
            out << '-';
        for (std::size_t i = 0; i < parents.size(); ++i)
            out << (i ? "," : "") << table.names[parents[i]];
        const std::vector<std::vector<int>> counts = count_table(table, base, parents);
        DsetAssignIter iter(assign);
        for (std::size_t e = 0; e < evals.size(); ++e) {
            out << '\t' << evals[e]->eval(iter) << '\t';
            // The count-table form of the consistency tail is not built.
            if ((*types)[e] == "PConsist")
                out << "NA";
            else
                out << evals[e]->eval(counts, static_cast<int>(parents.size()));
        }
        out << '\n';
        ++lines;
    };

    score({});
    for (int k = 1; k <= max_parents; ++k) {
        ParentWalk walk(k, assign, sets);
        walk.restart(allowed, forced, choice);
        std::vector<int> parents(k);
        for (walk.first(); walk.valid(); ++walk) {
            for (int j = 0; j < k; ++j)
                parents[j] = walk.id_at(j);
            score(parents);
        }
    }
    std::cout << lines << " parent sets of " << table.names[base] << " scored into " << out_path << std::endl;
    return 0;
}
