// seqpack_bench: timed driver of the k-mer counts and the PSSM scan on a real promoter set.
//
//   seqpack_bench <genes.tab> <promoters.fa> <length> <pssmk> <pssmd> <out dir> [--map] [--pssm-genes n]
//
// Reads the promoters (letter form, brought to <length>), counts all 8-mers and 12-mers with the array
// path (KMerFastCount), each count timed apart from writing its table <out dir>/vesk_k<k>.tsv (texts of
// A, C, G, T only, "kmer<TAB>count", in text order); with --map also the map walk (KMerCounter) at k 8,
// checked equal to the array path. Then the best site of every PSSM (both strands where the key says
// so) in every promoter, or in the first n genes with --pssm-genes; the time per matrix per Mb and the
// sites go to stdout and <out dir>/vesk_sites.tsv. Times are CPU seconds of this process and wall
// seconds.
#include "DnaSeqGenomePromoters.h"
#include "KMerAggragator.h"
#include "KMerFastCount.h"
#include "PssmSet.h"
#include "VarUniverse.h"

#include <chrono>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iostream>
#include <string>

namespace {
struct Timer {
    std::clock_t cpu0 = std::clock();
    std::chrono::steady_clock::time_point wall0 = std::chrono::steady_clock::now();
    double cpu() const { return double(std::clock() - cpu0) / CLOCKS_PER_SEC; }
    double wall() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - wall0).count();
    }
};

void report(const std::string& what, const Timer& t) {
    std::cout << what << "\tcpu " << t.cpu() << " s\twall " << t.wall() << " s" << std::endl;
}
} // namespace

int main(int argc, char** argv) {
    if (argc < 7) {
        std::cerr
            << "usage: seqpack_bench <genes.tab> <promoters.fa> <length> <pssmk> <pssmd> <out dir> [--map] "
               "[--pssm-genes n]"
            << std::endl;
        return 2;
    }
    bool map_walk = false;
    int pssm_genes = -1;
    for (int i = 7; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--map"))
            map_walk = true;
        else if (!std::strcmp(argv[i], "--pssm-genes") && i + 1 < argc)
            pssm_genes = std::stoi(argv[++i]);
    }
    const std::string out_dir = argv[6];
    VarUniverse univ;
    DnaSeqGenomePromoters<DnaSequence> genome;
    {
        Timer t;
        std::ifstream genes(argv[1]), fasta(argv[2]);
        if (!genes || !fasta) {
            std::cerr << "cannot open the gene table or the promoters" << std::endl;
            return 1;
        }
        std::streambuf* err = std::cerr.rdbuf(nullptr); // the readers' warnings
        univ.read_short_tabs(genes);
        genome.read_fasta(std::stoi(argv[3]), univ, fasta, false, false);
        std::cerr.rdbuf(err);
        report("read promoters", t);
    }
    double bases = 0;
    for (int g = 0; g < genome.id_space_size(); ++g)
        if (!genome.get_promoter(g).is_empty())
            bases += genome.get_promoter(g).get_length();
    std::cout << genome.id_space_size() << " promoters, " << bases / 1e6 << " Mb" << std::endl;
    ds_bitvec all(univ.size());
    all.set(true);

    for (int k : {8, 12}) {
        KMerFastCount fc;
        {
            Timer t;
            fc.count(genome, all, k, 0, -1);
            report("count k=" + std::to_string(k), t);
        }
        Timer t;
        std::ofstream out(out_dir + "/vesk_k" + std::to_string(k) + ".tsv");
        std::uint64_t total = 0;
        fc.for_each([&](const std::string& text, std::uint64_t count, int) {
            if (text.find_first_not_of("ACGT") != std::string::npos)
                return;
            out << text << '\t' << count << '\n';
            total += count;
        });
        out.close();
        report("write k=" + std::to_string(k), t);
        std::cout << "k=" << k << " A/C/G/T occurrences " << total << std::endl;
        if (k == 8 && map_walk) {
            std::streambuf* err = std::cerr.rdbuf(nullptr); // the walk's progress trace
            Timer tm;
            KMerCounter<DnaSequence> counter(univ, genome);
            counter.init(8, 0, 0, 0, all, 0, -1);
            std::cerr.rdbuf(err);
            report("map walk k=8", tm);
            std::uint64_t differ = 0;
            for (auto it = counter.get_begin(); it != counter.get_end(); ++it)
                differ += fc.get_count(it->first) != it->second;
            std::cout << "map walk texts differing from the array path: " << differ << std::endl;
        }
    }

    PssmSet set;
    {
        std::streambuf* err = std::cerr.rdbuf(nullptr);
        set.read(argv[4], argv[5], 0, 0, 0.025f, false);
        std::cerr.rdbuf(err);
    }
    const int ngenes = pssm_genes < 0 ? genome.id_space_size() : std::min(pssm_genes, genome.id_space_size());
    double scan_bases = 0;
    for (int g = 0; g < ngenes; ++g)
        if (!genome.get_promoter(g).is_empty())
            scan_bases += genome.get_promoter(g).get_length();
    std::ofstream sites(out_dir + "/vesk_sites.tsv");
    Timer t;
    long long checksum = 0;
    std::vector<int> pos(static_cast<std::size_t>(ngenes)), dirs(static_cast<std::size_t>(ngenes));
    std::vector<float> best(static_cast<std::size_t>(ngenes));
    double scan_cpu = 0;
    for (int i = 0; i < set.size(); ++i) {
        Timer ti;
        for (int g = 0; g < ngenes; ++g) {
            const DnaSeqPromoter<DnaSequence>& seq = genome.get_promoter(g);
            if (seq.is_empty())
                continue;
            pos[g] = set.m_pssms[i].max_like_match(seq, best[g], dirs[g]);
        }
        scan_cpu += ti.cpu();
        for (int g = 0; g < ngenes; ++g) {
            checksum += pos[g] * dirs[g];
            sites << i << '\t' << g << '\t' << pos[g] << '\t' << dirs[g] << '\t' << best[g] << '\n';
        }
    }
    report("scan all PSSMs (sites table included)", t);
    std::cout << "PSSM scan: " << set.size() << " matrices over " << ngenes << " promoters ("
              << scan_bases / 1e6 << " Mb), scan cpu " << scan_cpu << " s, "
              << 1000.0 * scan_cpu / set.size() / (scan_bases / 1e6) << " ms per matrix per Mb (checksum "
              << checksum << ")" << std::endl;
    return 0;
}
