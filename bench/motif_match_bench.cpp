// motif_match_bench: timed driver of degenerate pattern matching on a real promoter set.
//
//   motif_match_bench <genes.tab> <promoters.fa> <length> <out dir> [--patterns n] [--edits n] [--seed s]
//                     [--genes n] [--max-deg d]
//
// Reads the promoters in letter and packed form (brought to <length>), writes the letter promoters
// one per line to <out dir>/seqs.txt (the first n genes with --genes), and builds the k-mer index (k 6,
// up to d '*', default 1, whole promoters)
// with its time and the growth of the resident set. Then:
//   - n random 8-position degenerate patterns (a promoter 8-mer with one position widened to two
//     bases and one to '*'): a full match of every packed promoter, timed per pattern; the patterns as
//     extended regular expressions and the gene counts go to <out dir>/patterns.tsv (for grep -c -E);
//   - an AssocPatternHash over all genes: e random single edits (ends, positions, windows,
//     remember/revert) from such a pattern, each timed, beside the time of matching the pattern to
//     every gene afresh.
// Times are CPU seconds of this process.
#include "AssocPatternHash.h"
#include "VarUniverse.h"

#include <cstring>
#include <ctime>
#include <fstream>
#include <iostream>
#include <random>
#include <string>

namespace {
double cpu_now() { return double(std::clock()) / CLOCKS_PER_SEC; }

long rss_kb() {
    std::ifstream in("/proc/self/status");
    std::string key;
    long v = 0;
    while (in >> key) {
        if (key == "VmRSS:") {
            in >> v;
            return v;
        }
        in.ignore(1 << 12, '\n');
    }
    return v;
}

// One position widened to two bases, one to any base. The letters are those of the packed pattern's
// table (A or C is 'L', C or T is 'M'). The regular expression reads as the packed match does: an N in
// the sequence fits every position, and two more letters must follow (the packed scan leaves out the
// last two starts).
std::string degenerate(const std::string& kmer, std::mt19937& rng, std::string& ere) {
    static const char* two[4][3] = {{"R", "L", "W"}, {"L", "S", "M"}, {"R", "S", "K"}, {"W", "M", "K"}};
    static const char* two_ere[4][3] = {{"[AGN]", "[ACN]", "[ATN]"},
                                        {"[ACN]", "[CGN]", "[CTN]"},
                                        {"[AGN]", "[CGN]", "[GTN]"},
                                        {"[ATN]", "[CTN]", "[GTN]"}};
    std::string pat;
    ere.clear();
    const int star = static_cast<int>(rng() % 8);
    const int w1 = static_cast<int>(rng() % 8);
    for (int i = 0; i < 8; ++i) {
        const char c = kmer[static_cast<std::size_t>(i)];
        const int b = static_cast<int>(std::string("ACGT").find(c));
        if (i == star) {
            pat += '*';
            ere += '.';
        } else if (i == w1) {
            const int pick = static_cast<int>(rng() % 3);
            pat += two[b][pick];
            ere += two_ere[b][pick];
        } else {
            pat += c;
            ere += std::string("[") + c + "N]";
        }
    }
    ere += "..";
    return pat;
}
} // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::cerr << "usage: motif_match_bench <genes.tab> <promoters.fa> <length> <out dir> [--patterns n] "
                     "[--edits n] [--seed s]"
                  << std::endl;
        return 2;
    }
    int n_pat = 20, n_edits = 10000, n_genes = -1, max_deg = 1;
    unsigned seed = 5;
    bool fast = true;
    for (int i = 5; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--patterns"))
            n_pat = std::stoi(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--edits"))
            n_edits = std::stoi(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--genes"))
            n_genes = std::stoi(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--max-deg"))
            max_deg = std::stoi(argv[i + 1]);
        else if (!std::strcmp(argv[i], "--plain"))
            fast = std::stoi(argv[i + 1]) == 0;
        else if (!std::strcmp(argv[i], "--seed"))
            seed = static_cast<unsigned>(std::stoul(argv[i + 1]));
    }
    const int length = std::stoi(argv[3]);
    const std::string out = argv[4];
    VarUniverse univ;
    DnaSeqGenomePromoters<DnaSequence> letters;
    DnaSeqGenomePromoters<DnaDenseSequence> dense;
    {
        std::ifstream g(argv[1]), f1(argv[2]), f2(argv[2]);
        univ.read_short_tabs(g);
        letters.read_fasta(length, univ, f1, false, false);
        dense.read_fasta(length, univ, f2, false, false);
    }
    ds_bitvec genes(univ.size());
    {
        std::ofstream seqs(out + "/seqs.txt");
        for (int g = 0; g < univ.size(); ++g)
            if (!letters.get_promoter(g).is_empty() && !dense.get_promoter(g).is_empty() &&
                (n_genes < 0 || genes.on_bits() < n_genes)) {
                genes.set_ind(g);
                std::string line = letters.get_promoter(g);
                for (char& c : line)
                    if (c == '\0')
                        c = 'X'; // padding in front of a short promoter
                seqs << line << "\n";
            }
    }
    std::cout << "genes with promoters\t" << genes.on_bits() << std::endl;

    const long rss0 = rss_kb();
    double t0 = cpu_now();
    KMerAggragator<DnaSequence> index(univ, letters);
    index.init(6, max_deg, 0, 0, genes, 0, -1);
    std::cout << "index k 6 max deg " << max_deg << "\tcpu " << cpu_now() - t0 << " s\trss +"
              << (rss_kb() - rss0) / 1024 << " MB" << std::endl;

    std::mt19937 rng(seed);
    std::vector<int> ids;
    for (int g = 0; g < univ.size(); ++g)
        if (genes.get_ind(g))
            ids.push_back(g);
    auto random_pattern = [&](std::string& ere) {
        while (true) {
            const std::string& s = letters.get_promoter(ids[rng() % ids.size()]);
            const std::string kmer = s.substr(rng() % (s.size() - 8), 8);
            if (kmer.find_first_not_of("ACGT") == std::string::npos)
                return degenerate(kmer, rng, ere);
        }
    };
    {
        std::ofstream pats(out + "/patterns.tsv");
        double total = 0.0;
        for (int i = 0; i < n_pat; ++i) {
            std::string ere;
            Dna8MerPattern p;
            p.init_str(random_pattern(ere));
            t0 = cpu_now();
            int count = 0;
            for (int g : ids)
                count += p.match(dense.get_promoter(g));
            const double t = cpu_now() - t0;
            total += t;
            pats << p.get_str() << "\t" << ere << "\t" << count << "\t" << t << "\n";
        }
        std::cout << "full match of " << n_pat << " patterns\tcpu " << total << " s\tper pattern "
                  << total / n_pat << " s" << std::endl;
    }

    AssocPatternHashDense assoc(dense, index, genes, 6);
    assoc.m_trace = false;
    assoc.m_fast = fast;
    std::string ere;
    Dna8MerPattern start;
    start.init_str(random_pattern(ere));
    t0 = cpu_now();
    const int rounds = 5;
    long full_scans = 0;
    for (int i = 0; i < rounds; ++i) {
        AssocPatternHashDense fresh(dense, index, genes, 6);
        fresh.m_trace = false;
        fresh.m_fast = fast;
        fresh.match(start);
        full_scans += fresh.m_full_matches;
    }
    const double full = (cpu_now() - t0) / rounds;
    assoc.match(start);
    assoc.remember();
    double edits = 0.0;
    int on = 0;
    static const char* names[8] = {"push_back",       "push_front", "del_back", "del_front",
                                   "change_to_range", "remember",   "revert",   "change_char"};
    double op_time[8] = {0};
    int op_count[8] = {0};
    long op_scans[8] = {0};
    for (int i = 0; i < n_edits; ++i) {
        const int L = assoc.get_pattern().length();
        if (L > 12 || L < 6 || assoc.get_genes().on_bits() == 0 ||
            assoc.get_genes().on_bits() > genes.on_bits() / 2) {
            start.init_str(random_pattern(ere));
            assoc.match(start);
            assoc.remember();
            continue;
        }
        const int op = static_cast<int>(rng() % 10);
        const DnaSeqDegChar c(static_cast<unsigned char>(1 + rng() % 15));
        const long scans0 = assoc.m_full_matches;
        t0 = cpu_now();
        switch (op) {
        case 0:
            assoc.push_back(c);
            break;
        case 1:
            assoc.push_front(c);
            break;
        case 2:
            assoc.del_back();
            break;
        case 3:
            assoc.del_front();
            break;
        case 4:
            assoc.change_to_range(rng() % 2 ? -1 : 200 + static_cast<int>(rng() % (length - 200)));
            break;
        case 5:
            assoc.remember();
            break;
        case 6:
            assoc.revert();
            break;
        default:
            assoc.change_char(static_cast<int>(rng() % L), c);
        }
        const double t = cpu_now() - t0;
        edits += t;
        op_time[op < 7 ? op : 7] += t;
        op_scans[op < 7 ? op : 7] += assoc.m_full_matches - scans0;
        ++op_count[op < 7 ? op : 7];
        on += assoc.get_genes().on_bits();
    }
    std::cout << "full match of one pattern to all genes\tcpu " << full << " s\tgenes matched in full "
              << full_scans / rounds << std::endl;
    std::cout << n_edits << " incremental edits\tcpu " << edits << " s\tper edit " << edits / n_edits
              << " s\tfull / edit " << full / (edits / n_edits) << "\tmean genes " << on / double(n_edits)
              << std::endl;
    for (int o = 0; o < 8; ++o)
        if (op_count[o])
            std::cout << "  " << names[o] << "\t" << op_count[o] << "\tper edit " << op_time[o] / op_count[o]
                      << " s\tfull / edit " << full / (op_time[o] / op_count[o]) << "\tgenes matched in full "
                      << double(op_scans[o]) / op_count[o] << std::endl;
    return 0;
}
