// kmer_stats: k-mer counts of a genome's promoters from one option file. Reads the gene table and the
// promoters, counts every k-mer text of a window (with gapped and degenerate forms as configured), the
// genes holding each, and an optional background value per text, and writes one headed table.
//
//   kmer_stats <option file>      (see examples/README.md for the scopes and keys)
#include "DnaSeqGenomePromoters.h"
#include "ExampleSeq.h"
#include "KMerAggragator.h"
#include "KMerDistrib.h"
#include "KMerFastCount.h"
#include "VarUniverse.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <string>

namespace {

// One output line; texts holding padding (NUL) are left out.
void write_line(std::ostream& out, const std::string& text, std::uint64_t count, int genes,
                const KMerDistrib* background) {
    if (text.find('\0') != std::string::npos)
        return;
    out << text << '\t' << count << '\t' << genes << '\t';
    if (background && background->has(text))
        out << background->get(text);
    else
        out << "NA";
    out << '\n';
}
} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "kmer_stats", opts))
        return rc;
    VarUniverse universe;
    DnaSeqGenomePromoters<DnaSequence> genome;
    if (!read_genes_and_promoters(opts, universe, genome))
        return 1;
    const int k = opts.get_int("KMer", "K", true);
    const int max_deg = opts.get_int("KMer", "MaxDeg", false);
    const int min_gap = opts.get_int("KMer", "MinGap", false);
    const int max_gap = opts.get_int("KMer", "MaxGap", false);
    const int from = opts.get_int("KMer", "From", false);
    // Without a To the whole promoter is walked.
    const int to = opts.has_option("KMer", "To") ? opts.get_int("KMer", "To", true) : -1;

    KMerDistrib background;
    bool have_background = false;
    if (opts.has_option("Tables", "Background") && !opts.get_str("Tables", "Background", false).empty()) {
        std::ifstream in;
        if (!open_in(in, opts.get_str("Tables", "Background", false)))
            return 1;
        background.read(in, opts.get_int("KMer", "BackgroundCols", true));
        have_background = true;
    }

    std::ofstream out(opts.get_str("Tables", "OutKMers", true));
    if (!out) {
        std::cerr << "Cannot write " << opts.get_str("Tables", "OutKMers", true) << std::endl;
        return 1;
    }
    out << "kmer\tcount\tgenes\tbackground\n";
    ds_bitvec all(universe.size());
    all.set(true);
    const KMerDistrib* bg = have_background ? &background : nullptr;
    int texts = 0;
    if (KMerFastCount::can_count(k, max_deg, min_gap, max_gap)) {
        KMerFastCount fast;
        fast.count(genome, all, k, from, to);
        fast.for_each([&](const std::string& text, std::uint64_t count, int genes) {
            write_line(out, text, count, genes, bg);
            ++texts;
        });
    } else {
        KMerCounter<DnaSequence> counter(universe, genome);
        counter.init(k, max_deg, min_gap, max_gap, all, from, to);
        KMerAggragator<DnaSequence> index(universe, genome);
        index.init(k, max_deg, min_gap, max_gap, all, from, to);
        for (auto it = counter.get_begin(); it != counter.get_end(); ++it) {
            write_line(out, it->first, it->second, index.get_pat_fp(it->first).on_bits(), bg);
            ++texts;
        }
    }
    std::cout << texts << " texts counted" << std::endl;
    return out ? 0 : 1;
}
