// Timed driver: DynProgAlign with traceback on all pairs of a FASTA file (cells per CPU second), and
// one EM iteration (expectation and maximisation) of a star-initialised profile on all sequences.
//
//   profile_align_bench <proteins.fa> <blosum62_codes.opt> <gap> [repeats (5)]
#include "HMMEMBase.h"
#include "ProfileHMMInit.h"
#include "Random.h"
#include "SeqAlign.h"
#include "SymbolSequence.h"
#include "options.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>

namespace {

double cpu() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

class Store : public ProfilerStoreBase {
public:
    explicit Store(const SymbolSequenceSet& s) : seqs(s), prof(24, 0) {}
    const SymbolSequenceSet& get_seq_family() override { return seqs; }
    ProfileHMM& get_target_profile() override { return prof; }
    const SymbolSequenceSet& seqs;
    ProfileHMM prof;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::cerr << "usage: profile_align_bench <proteins.fa> <blosum62_codes.opt> <gap> [repeats]"
                  << std::endl;
        return 2;
    }
    std::ifstream fa(argv[1]), mo(argv[2]);
    if (!fa || !mo) {
        std::cerr << "cannot open inputs" << std::endl;
        return 1;
    }
    ProteinSequenceSet seqs;
    seqs.read_fasta_file(fa);
    options opts;
    opts.read(mo, false);
    const SymbSubstMat mat(opts, "Subst");
    const int gap = std::atoi(argv[3]);
    const int repeats = argc > 4 ? std::atoi(argv[4]) : 5;

    DynProgAlign dp(mat, gap);
    SeqAlignment al;
    long long cells = 0, check = 0;
    const double t0 = cpu();
    for (int r = 0; r < repeats; ++r) {
        for (std::size_t i = 0; i < seqs.size(); ++i) {
            for (std::size_t j = i + 1; j < seqs.size(); ++j) {
                check += dp.align(seqs[i], seqs[j], al) + static_cast<long long>(al.size());
                cells += static_cast<long long>(seqs[i].size()) * static_cast<long long>(seqs[j].size());
            }
        }
    }
    const double t1 = cpu();
    std::cout << "vesk\tdp_all_pairs\t" << cells << "\t" << (t1 - t0) << "\t" << cells / (t1 - t0) << "\t"
              << check << std::endl;

    Random::reset(1);
    Store store(seqs);
    ProfileHMMInitRandStar init(mat, gap, 2, 1.0f, false);
    init.attach_profiler(&store);
    init.reinit();
    HMMEMBase em(store.prof, 1.0f, false);
    em.resize_tabs();
    const double t2 = cpu();
    const float ll = em.expectation(seqs);
    em.maximization();
    const double t3 = cpu();
    std::cout << "vesk\tem_iteration\t" << store.prof.m_length << "\t" << (t3 - t2) << "\t" << ll
              << std::endl;
    return 0;
}
