// Timed driver: builds a random regulatory network of logic tables (default 2,000 genes, 0-9
// regulators each) in the plain or the consistency form and reports the time and peak memory.
//
//   bn_logic_bench plain|consist [genes] [seed]     (the logic nodes' traces go to stderr)
#include "BNLogicBuild.h"
#include "BNState.h"
#include "BNet.h"
#include "LDSoftLogic.h"
#include "LDTable.h"
#include "LocalDist.h"
#include "LocalLogic.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <random>
#include <sstream>
#include <string>

namespace {

struct Tables {
    std::string nodes, attrs, logic_nodes, logic_attrs;
};

// Gene g draws 0-9 regulators among the genes before it (so the plain form is acyclic), card 2 or
// 3; genes with 9 regulators take 3 values, since a binary one would give its consistency node
// 10 parents. The root of gene g is logic node g: an OR (sum capped at 1), an AND (min), a count
// (sum capped at card - 1), a max, or for up to 3 regulators a random table; a third of the sums
// and mins take a nested max over two of the regulators as their last input.
Tables make_tables(int genes, unsigned seed, bool consist) {
    std::mt19937 rng(seed);
    auto uni = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    std::ostringstream nodes, attrs, ln, la;
    int next_lid = genes;
    for (int g = 0; g < genes; ++g) {
        const int k = std::min(uni(0, 9), g);
        const int card = k == 9 ? 3 : (uni(0, 4) == 0 ? 3 : 2);
        nodes << g << " " << g << " " << card << "\n";
        std::vector<int> regs;
        while (static_cast<int>(regs.size()) < k) {
            const int r = uni(0, g - 1);
            if (std::find(regs.begin(), regs.end(), r) == regs.end())
                regs.push_back(r);
        }
        const char* tail = consist ? " 0\n" : " 0 0\n";
        attrs << g << " in_logic " << g << tail;
        if (uni(0, 3) == 0)
            attrs << g << " uniform_prior 0.05" << tail;
        for (int i = 0; i < k; ++i)
            attrs << g << " regulator" << i << " " << regs[i] << tail;
        const int kind = k == 0 ? 3 : (k <= 3 && uni(0, 3) == 0 ? 4 : uni(0, 3));
        if (kind == 4) {
            ln << g << " table " << k << " 3 t\n";
            la << g << "\ttable\t";
            int size = 1;
            for (int i = 0; i < k; ++i)
                size *= 3;
            for (int i = 0; i < size; ++i)
                la << (i ? " " : "") << uni(0, card - 1);
            la << "\t0\t0\n";
        } else {
            ln << g
               << (kind == 0   ? " sum 0 2 or\n"
                   : kind == 1 ? " min 0 0 and\n"
                   : kind == 2 ? " sum 0 "
                               : " max 0 0 m\n");
            if (kind == 2)
                ln << card << " count\n";
        }
        for (int i = 0; i < k; ++i)
            la << g << "\tinput" << i << "\t1\t" << regs[i] << "\t0\n";
        if (k >= 2 && kind <= 1 && uni(0, 2) == 0) {
            const int lid = next_lid++;
            ln << lid << " max 0 0 nested\n";
            la << lid << "\tinput0\t1\t" << regs[0] << "\t0\n"
               << lid << "\tinput1\t1\t" << regs[1] << "\t0\n";
            la << lid << "\tmax\t1\t0\t0\n";
            la << g << "\tinput" << k << "\t0\t" << lid << "\t0\n";
        }
    }
    return {nodes.str(), attrs.str(), ln.str(), la.str()};
}

double cpu_seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: bn_logic_bench plain|consist [genes] [seed]" << std::endl;
        return 2;
    }
    const bool consist = std::string(argv[1]) == "consist";
    const int genes = argc > 2 ? std::atoi(argv[2]) : 2000;
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 1;
    const Tables t = make_tables(genes, seed, consist);

    const auto w0 = std::chrono::steady_clock::now();
    const double c0 = cpu_seconds();
    BNet<int> net;
    std::istringstream nodes(t.nodes);
    net.add_all_nodes(nodes);
    LocalLogicSet logic(net);
    std::istringstream ln(t.logic_nodes), la(t.logic_attrs);
    logic.read(ln, la);
    BNStateDispatch<int> state(net);
    LocalDistSet<int> dists;
    std::istringstream nodes2(t.nodes), attrs(t.attrs);
    if (consist)
        build_fbn_from_logic_with_disp_ldtabs(net, state, nodes2, attrs, 0.1f, logic, dists);
    else
        build_bnet_from_logic_with_disp_ldtabs(net, state, nodes2, attrs, 0.1f, logic, dists);
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - w0).count();
    const double cpu = cpu_seconds() - c0;

    int soft = 0, tables = 0;
    long long entries = 0;
    for (int i = 0; i < dists.size(); ++i) {
        if (const LDTable* tab = dynamic_cast<const LDTable*>(dists.get_ld(i))) {
            ++tables;
            entries += tab->get_tab_size();
        } else {
            ++soft;
        }
    }
    struct rusage ru;
    getrusage(RUSAGE_SELF, &ru);
    std::cout << (consist ? "consist" : "plain") << " genes " << genes << " nodes " << net.get_nodes_num()
              << " edges " << net.get_edges_num() << " soft " << soft << " tables " << tables << " entries "
              << entries << " wall_s " << wall << " cpu_s " << cpu << " peak_kb " << ru.ru_maxrss
              << std::endl;
    return 0;
}
