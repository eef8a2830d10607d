// pssm_scan: best sites of PSSMs in a genome's promoters from one option file. Reads the gene table,
// the promoters and a PSSM set (key and data tables), writes the PSSMs' columns and, for each PSSM and
// gene, the best site when its affinity exp(ll - max ll) reaches a threshold.
//
//   pssm_scan <option file>      (see examples/README.md for the scopes and keys)
#include "DnaSeqGenomePromoters.h"
#include "ExampleSeq.h"
#include "PssmSet.h"
#include "VarUniverse.h"
#include "options.h"

#include <cmath>
#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "pssm_scan", opts))
        return rc;
    VarUniverse universe;
    DnaSeqGenomePromoters<DnaSequence> genome;
    if (!read_genes_and_promoters(opts, universe, genome))
        return 1;
    const int have_scores = opts.get_int("Scan", "HaveScores", false);
    const float prior = opts.has_option("Scan", "Prior") ? opts.get_float("Scan", "Prior", true) : 0.025f;
    const bool logodds = opts.get_int("Scan", "LogOdds", false) != 0;
    const double min_affinity = opts.get_float("Scan", "MinAffinity", false);

    PssmSet pssms;
    pssms.read(opts.get_str("Tables", "pssm_key", true), opts.get_str("Tables", "pssm_data", true),
               opts.get_int("Tables", "pssm_max_range", false), have_scores, prior, logodds);

    std::ofstream tab(opts.get_str("Tables", "OutPssm", true)), hits(opts.get_str("Tables", "OutHits", true));
    if (!tab || !hits) {
        std::cerr << "Cannot write the output tables" << std::endl;
        return 1;
    }
    for (int i = 0; i < pssms.size(); ++i)
        pssms.m_pssms[i].write_tab(tab, i);

    hits << "pssm\tconsensus\tgene\tname\tpos\tstrand\tll\taffinity\n";
    int lines = 0;
    for (int i = 0; i < pssms.size(); ++i) {
        const DnaPSSM& pssm = pssms.m_pssms[i];
        const std::string consensus = pssm.get_consensus();
        const double max_ll = pssm.get_max_ll();
        for (int gene = 0; gene < genome.id_space_size(); ++gene) {
            const DnaSeqPromoter<DnaSequence>& seq = genome.get_promoter(gene);
            if (seq.is_empty() || seq.get_length() < pssm.width())
                continue;
            float ll;
            int dir;
            const int pos = pssm.max_like_match(seq, ll, dir);
            const double affinity = std::exp(static_cast<double>(ll) - max_ll);
            if (!(affinity >= min_affinity))
                continue;
            const std::string& name =
                gene < static_cast<int>(universe.m_short_names.size()) ? universe.m_short_names[gene] : "";
            hits << i << '\t' << consensus << '\t' << gene << '\t' << name << '\t' << pos << '\t' << dir
                 << '\t' << ll << '\t' << affinity << '\n';
            ++lines;
        }
    }
    std::cout << pssms.size() << " PSSMs, " << lines << " hits" << std::endl;
    return tab && hits ? 0 : 1;
}
