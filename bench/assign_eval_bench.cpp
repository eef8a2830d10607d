// Timed driver: every parent set of up to three parents of each variable of a discrete table
// (default bench/data/out/assign_bench.tab: 10,000 rows x 20 variables of values 0..2, written by
// assign_bench_numpy.py), scored through the assignment lattice by one evaluator type at a time.
// The walk keeps one DsetAssign per base variable and moves parents in and out with IdDSetIter
// hooks, so the time includes the lattice updates. Prints per type the sets, the CPU and wall
// seconds, the sets per CPU second, and the sum of the scores (to check against the numpy scorer).
//
//   assign_eval_bench [table] [types...]        (types default: BDe MInfo)
#include "alg/DsetAssignEvalFact.h"
#include "ds/DsetAssign.h"
#include "ds/DsetAssignIter.h"
#include "ds/IdDSetIter.h"
#include "options.h"

#include <chrono>
#include <ctime>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

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

} // namespace

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "bench/data/out/assign_bench.tab";
    std::vector<std::string> types;
    for (int i = 2; i < argc; ++i)
        types.push_back(argv[i]);
    if (types.empty())
        types = {"BDe", "MInfo"};

    std::ifstream in(path);
    if (!in) {
        std::cerr << "Cannot open " << path << " (make it with bench/assign_bench_numpy.py make)"
                  << std::endl;
        return 1;
    }
    std::string line;
    std::getline(in, line);
    std::istringstream head(line);
    int ncols = 0;
    for (std::string n; head >> n;)
        ++ncols;
    std::vector<std::vector<int>> rows;
    while (std::getline(in, line)) {
        std::istringstream f(line);
        std::vector<int> row;
        for (int v; f >> v;)
            row.push_back(v);
        if (static_cast<int>(row.size()) == ncols)
            rows.push_back(row);
    }
    const int nrows = static_cast<int>(rows.size());
    std::vector<std::vector<std::unique_ptr<ds_bitvec>>> owned(ncols);
    std::vector<DsetValueSets> sets(ncols);
    for (int c = 0; c < ncols; ++c)
        for (int v = 0; v < 3; ++v) {
            owned[c].emplace_back(new ds_bitvec(nrows));
            for (int r = 0; r < nrows; ++r)
                if (rows[r][c] == v)
                    owned[c][v]->set_ind(r);
            sets[c].push_back(owned[c][v].get());
        }

    options opts;
    std::istringstream opt_text("[Eval]\nLogit = 0\nEquivSampleSize = 1\nMaxCard = 3\nMaxKToCalc = 3\n");
    opts.read(opt_text, false);
    MultiDimIdSpace space(2, 4);
    std::cout << nrows << " rows, " << ncols << " variables, parent sets of up to 3" << std::endl;

    for (const std::string& type : types) {
        std::unique_ptr<DsetAssignEvalBase> eval(dset_assign_eval_gen().make(type.c_str(), opts, "Eval"));
        long long count = 0;
        double sum = 0;
        const std::clock_t c0 = std::clock();
        const auto w0 = std::chrono::steady_clock::now();
        for (int base = 0; base < ncols; ++base) {
            DsetAssign assign(space, 3, 4, nrows, false);
            assign.insert_base_var(base, sets[base]);
            ds_bitvec allowed(ncols);
            allowed.set(true);
            allowed.clr_ind(base);
            DsetAssignIter iter(assign);
            sum += eval->eval(iter);
            ++count;
            for (int k = 1; k <= 3; ++k) {
                ParentWalk walk(k, assign, sets);
                walk.restart(allowed, {}, {});
                for (walk.first(); walk.valid(); ++walk) {
                    iter.restart(assign);
                    sum += eval->eval(iter);
                    ++count;
                }
            }
        }
        const double cpu = static_cast<double>(std::clock() - c0) / CLOCKS_PER_SEC;
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - w0).count();
        std::cout << type << "\tsets " << count << "\tcpu_s " << cpu << "\twall_s " << wall
                  << "\tsets_per_cpu_s " << static_cast<long long>(count / cpu) << "\tsum " << sum
                  << std::endl;
    }
    return 0;
}
