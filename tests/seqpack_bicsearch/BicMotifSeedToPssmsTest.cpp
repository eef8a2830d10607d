// Seeds to PSSMs: the best-rank search against the numpy/scipy model of threshold_model.py, and a
// synthetic module whose planted sites are found from the motif search's pattern: the consensus,
// the site report at the planted positions, the flank FASTA and the tables read back.
#include "BicMotifSeedToPssms.h"
#include "AssocPatternHash.h"
#include "BicMotifTaboo.h"
#include "PssmSet.h"
#include "SeedWorld.h"

#include <cmath>
#include <fstream>
#include <map>
#include <set>

namespace {

std::string seeds_text(const TempDir& dir, float fp_score = 3.0f) {
    const std::string d = dir.path() + "/";
    return "[Seeds]\nPriorMultip = { f 4\n0.25 0.25 0.25 0.25\n}\nMaxPosEntropy = 1.0\nThreshScore = 3\n"
           "MaxVars = 40\nMaxPatLength = 12\nMaxPad = 3\nMinMotifBicFrac = 0.25\nLogit = 0\n"
           "out_motfps = " +
           d + "motfps\nout_pssmk = " + d + "pssmk\nout_pssmd = " + d +
           "pssmd\nGenPosRpt = 1\npos_rpt = " + d +
           "pos\nGenFlank = 1\nFlankReportBP = 3\nFlankRptDir = " + d +
           "\nFpThreshScore = " + std::to_string(fp_score) + "\n";
}

std::vector<std::vector<std::string>> rows_of(const std::string& path) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        std::vector<std::string> f;
        std::istringstream ls(line);
        for (std::string x; std::getline(ls, x, '\t');)
            f.push_back(x);
        rows.push_back(f);
    }
    return rows;
}

} // namespace

TEST(BicMotifSeedToPssms, BestRankMatchesTheHypergeometricModel) {
    std::ifstream in(source_dir() + "/data/seqpack_bicsearch/threshold_cases.txt");
    ASSERT_TRUE(in);
    TempDir dir;
    int cases = 0;
    std::string tag;
    while (in >> tag && tag == "case") {
        int id = 0, max_vars = 0;
        float need = 0, fp = 0;
        in >> id >> need >> max_vars >> fp;
        SCOPED_TRACE(id);
        std::string line;
        std::getline(in, line);
        std::getline(in, line);
        std::istringstream ws(line.substr(6));
        std::vector<std::string> words;
        for (std::string w; ws >> w;)
            words.push_back(w);
        std::getline(in, line);
        std::istringstream fs(line.substr(6));
        const int genes = static_cast<int>(words.size());
        ds_bitvec focus(genes), all(genes);
        for (int g; fs >> g;)
            focus.set_ind(g);
        DnaSeqGenomePromoters<DnaSequence> genome;
        genome.m_promoters.resize(genes);
        for (int g = 0; g < genes; ++g) {
            static_cast<std::string&>(genome.m_promoters[g]) = words[g] + "A";
            all.set_ind(g);
        }
        std::ostringstream keys;
        keys << "MaxVars = " << max_vars << "\nMinMotifBicFrac = " << need << "\nFpThreshScore = " << fp
             << "\n";
        std::string text = seeds_text(dir);
        text = without_key(without_key(without_key(text, "MaxVars"), "MinMotifBicFrac"), "FpThreshScore");
        BicMotifSeedToPssms s(genome, all, bic_options(text + keys.str()), "Seeds");
        s.m_pssm.resize(2);
        const float cols[2][4] = {{0.41f, 0.29f, 0.19f, 0.11f}, {0.07f, 0.13f, 0.23f, 0.57f}};
        for (int c = 0; c < 2; ++c)
            for (int b = 0; b < 4; ++b)
                s.m_pssm.m_profile[c].m_prob[b] = cols[c][b];
        s.m_pssm.normalize();
        s.m_focus = focus;
        s.m_focus_count = focus.on_bits();
        s.m_motif_from = 0;
        s.m_motif_to = 1;
        for (int final = 0; final < 2; ++final) {
            int f = 0, hit = 0;
            float score = 0;
            std::string last;
            in >> tag >> f >> score >> hit >> last;
            ASSERT_EQ(f, final);
            s.find_best_threshold(final == 1);
            EXPECT_NEAR(s.m_score, score, 2e-3 + 1e-4 * score) << final;
            EXPECT_EQ(s.m_best_hit, hit) << final;
            if (hit > 0) {
                float ll = 0;
                s.m_pssm.calc_like(last + "A", ll);
                EXPECT_EQ(s.m_fp_thresh, ll) << final;
            }
        }
        ++cases;
    }
    EXPECT_EQ(tag, "end");
    EXPECT_EQ(cases, 7);
}

TEST(BicMotifSeedToPssms, PlantedModuleGivesItsConsensusSitesAndFlanks) {
    SeedWorld w;
    Quiet q;
    TempDir dir;
    // The seed comes from the motif search over the module: the tabu search's best pattern, its
    // wildcards written as N.
    DnaSeqGenomePromoters<DnaDenseSequence> dense;
    dense.m_promoters.resize(SeedWorld::kGenes);
    for (int g = 0; g < SeedWorld::kGenes; ++g) {
        std::istringstream in(w.genome.get_promoter(g) + "\n");
        dense.m_promoters[g].DnaDenseSequence::read_fasta(in);
        dense.m_promoters[g].m_is_empty = false;
    }
    KMerAggragator<DnaSequence> index(w.s.universe, w.genome);
    index.init(6, 2, 0, 0, w.all, 0, -1);
    AssocPatternHashDense assoc(dense, index, w.all, 6);
    assoc.m_trace = false;
    std::ostringstream tab;
    for (int c = 0; c < SeedWorld::kConds; ++c)
        for (int n = 0; n <= 16; ++n)
            tab << c << " " << n << " 0 10 0\n";
    options& o = bic_options(
        seeds_text(dir, 15.0f) + "[Tables]\nscore_tab = " + dir.write("score.tab", tab.str()) +
        "\nglob_score_tab = none\n[Iter]\nMaxGap = 2\nRangeStep = 20\nMaxRange = 80\n[Score]\n"
        "NumOfScoreConds = 3\nVarGroup = 0\nAssessMaxVars = 16\nCacheCondScores = 0\nLogit = 0\n[Taboo]\n"
        "PatIterScope = Iter\nMinNumberOfGenes = 3\nScoreScope = Score\nTabooMaxTime = 3\nTabooPeriod = 2\n"
        "VerifyScore = 0\nVerifyAssoc = 0\nLogit = 0\nEpsilon = 0.001\n");
    Dna8MerPattern p;
    p.init_str("ATTGC");
    assoc.match(p);
    BicMotifTaboo taboo(*w.s.graph, *w.s.wgt, assoc, o, "Taboo");
    taboo.optimize();
    std::string seed = taboo.m_best_pattern.get_str();
    for (char& c : seed)
        if (std::string("ACGT").find(c) == std::string::npos)
            c = 'N';
    ASSERT_NE(seed.find("ATTGC"), std::string::npos) << seed;

    {
        BicMotifSeedToPssms s(w.genome, w.all, o, "Seeds");
        // The same seed twice: the second is covered by the PSSM of the first.
        s.optimize(7, w.module(), {seed, seed});
        EXPECT_EQ(s.m_pssms.size(), 1u);
    }
    q.done();

    PssmSet back;
    back.read(dir.path() + "/pssmk", dir.path() + "/pssmd", 0, 1, 0.0f, false);
    ASSERT_EQ(back.size(), 1);
    EXPECT_EQ(back.m_bic_ids[0], 7);
    const std::string consensus = back.m_consensus[0];
    const size_t first = consensus.find_first_not_of('*');
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(consensus.substr(first, 7), SeedWorld::kPlanted) << consensus;
    EXPECT_EQ(back.m_pssms[0].get_consensus(), consensus);

    // Every focus gene above the best rank has a masked site at its planted position, and no site
    // is reported outside the module.
    std::set<int> reported;
    for (const auto& r : rows_of(dir.path() + "/motfps")) {
        ASSERT_EQ(r.size(), 3u);
        EXPECT_EQ(r[0], "7");
        EXPECT_EQ(r[1], consensus);
        reported.insert(std::stoi(r[2]));
    }
    EXPECT_GE(reported.size(), 9u);
    std::map<int, std::set<int>> sites;
    for (const auto& r : rows_of(dir.path() + "/pos")) {
        ASSERT_EQ(r.size(), 5u);
        EXPECT_EQ(r[0], "7");
        const int gene = std::stoi(r[1]);
        EXPECT_LT(gene, SeedWorld::kModule);
        EXPECT_TRUE(r[3] == "1" || r[3] == "-1");
        sites[gene].insert(std::stoi(r[2]) + static_cast<int>(first));
    }
    for (int g : reported) {
        EXPECT_LT(g, SeedWorld::kModule);
        EXPECT_EQ(sites[g].count(w.site_pos[g]), 1u) << g;
    }

    // The flank file: each reported gene's site with three letters on each side, on the forward strand.
    const std::string flank = read_file(dir.path() + "/" + consensus + "_flank.fasta");
    std::string want;
    for (const auto& r : rows_of(dir.path() + "/motfps")) {
        const int g = std::stoi(r[2]);
        const int start = w.site_pos[g] - static_cast<int>(first) - 3;
        const int len = static_cast<int>(consensus.size()) + 6;
        std::string text;
        for (int i = start; i < start + len; ++i)
            text.push_back(i < 0 || i >= 80 ? '*' : w.genome.get_promoter(g)[i]);
        want += ">" + r[2] + "\n" + text + "\n";
    }
    EXPECT_EQ(flank, want);
}
