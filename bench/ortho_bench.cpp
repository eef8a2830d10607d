// ortho_bench: times read_blast_dir and both doc generators on synthetic similarity files over eight
// yeast species on the Rokas topology (((((((Scer, Spar), Smik), Skud), Sbay), Scas), Sklu), Calb).
//
//   ortho_bench gen <dir> [hits] [genes]   writes the tree, variable tables, <a>.<b>.fixed files for
//                                          all 56 ordered pairs (about `hits` lines in all, default
//                                          10^6) and po.graph, the same hit graph as an undirected
//                                          graph file for proteinortho_clustering
//   ortho_bench run <dir>                  reads it from <dir> and prints the time and peak resident
//                                          memory of each step
//
// Each ortholog group has one gene in each species (missing for one gene in ten),
// scored 400-1000 with small shifts of the domain bounds, and weak random hits scored 35-99.
#include "MapDorthoClusts.h"
#include "SpeciesDorthoGraph.h"
#include "SpeciesPhylogeny.h"
#include "options.h"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

const char* kSpecies[] = {"Scer", "Spar", "Smik", "Skud", "Sbay", "Scas", "Sklu", "Calb"};

long peak_kb() {
    rusage ru;
    getrusage(RUSAGE_SELF, &ru);
    return ru.ru_maxrss;
}

int gen(const std::string& dir, long hits, int genes) {
    std::mt19937 rng(2003);
    // Leaves 0-7; inner node 8 + i joins the clade so far with species i + 1.
    {
        std::ofstream tree(dir + "/tree.tab");
        for (int s = 0; s < 8; ++s) {
            const std::string f = dir + "/" + kSpecies[s] + ".tab";
            std::ofstream var(f);
            for (int g = 0; g < genes; ++g)
                var << g << " " << kSpecies[s] << "_" << g << " gene x x s" << g << " a" << g << "\n";
            tree << s << " " << kSpecies[s] << " 0 " << f << " " << (s < 2 ? 8 : 8 + s - 1)
                 << " 0 0 0 x none\n";
        }
        for (int i = 0; i < 7; ++i)
            tree << 8 + i << " n" << i << " 1 none " << (i < 6 ? 9 + i : -1) << " " << i + 1
                 << " 0 0 x none\n";
    }
    const long per_pair = hits / 56;
    std::vector<int> len(8 * genes);
    for (int& l : len)
        l = 100 + int(rng() % 900);
    std::vector<char> present(8 * genes);
    for (char& p : present)
        p = rng() % 10 != 0;
    {
        // Planted groups of two or more genes: group number and member count.
        std::ofstream planted(dir + "/planted.txt");
        for (int g = 0; g < genes; ++g) {
            int n = 0;
            for (int s = 0; s < 8; ++s)
                n += present[s * genes + g];
            if (n > 1)
                planted << g << " " << n << "\n";
        }
    }
    // Undirected edges keyed by species pair, then the two names.
    std::map<std::tuple<std::string, std::string, std::string>, int> abc;
    for (int a = 0; a < 8; ++a)
        for (int b = 0; b < 8; ++b) {
            if (a == b)
                continue;
            std::ofstream f(dir + "/" + kSpecies[a] + "." + kSpecies[b] + ".fixed");
            long written = 0;
            auto line = [&](int ga, int gb, int score, int a0, int a1, int b0, int b1) {
                f << kSpecies[a] << "_" << ga << "\t" << kSpecies[b] << "_" << gb << "\t" << score << "\t"
                  << (a1 - a0 + 1) << "\t0\t0\t" << a0 << "\t" << a1 << "\t" << b0 << "\t" << b1 << "\t"
                  << score << "\n";
                ++written;
                std::string x = std::string(kSpecies[a]) + "_" + std::to_string(ga);
                std::string y = std::string(kSpecies[b]) + "_" + std::to_string(gb);
                if (y < x)
                    std::swap(x, y);
                int& w = abc[{x.substr(0, 4) + ".faa\t" + y.substr(0, 4) + ".faa", x, y}];
                w = std::max(w, score);
            };
            for (int g = 0; g < genes && written < per_pair; ++g) {
                if (!present[a * genes + g] || !present[b * genes + g])
                    continue;
                // Symmetric scores: both directions of an ortholog pair draw from one seed.
                std::mt19937 pr(unsigned(std::min(a, b) * 8 + std::max(a, b)) * 100003u + unsigned(g));
                const int score = 400 + int(pr() % 601);
                const int l = std::min(len[a * genes + g], len[b * genes + g]);
                // Group g has gene (g + 13 s) mod genes in species s: equal ids in two species make no
                // hit for the reader.
                line((g + 13 * a) % genes, (g + 13 * b) % genes, score, 1 + int(pr() % 5), l - int(pr() % 5),
                     1 + int(pr() % 5), l - int(pr() % 5));
            }
            while (written < per_pair) {
                const int ga = int(rng() % genes), gb = int(rng() % genes);
                if (ga == gb)
                    continue;
                const int s0 = 1 + int(rng() % 50);
                line(ga, gb, 35 + int(rng() % 65), s0, s0 + 40 + int(rng() % 60), s0,
                     s0 + 40 + int(rng() % 60));
            }
        }
    // proteinortho's graph format: a header, then the edges of each species pair under "# <a> <b>".
    std::ofstream po(dir + "/po.graph");
    po << "# file_a\tfile_b\n# a\tb\tevalue_ab\tbitscore_ab\tevalue_ba\tbitscore_ba\n";
    std::string last;
    for (const auto& [key, w] : abc) {
        const auto& [pair, x, y] = key;
        if (pair != last)
            po << "# " << pair << "\n";
        last = pair;
        po << x << "\t" << y << "\t1e-10\t" << w << "\t1e-10\t" << w << "\n";
    }
    std::cout << "wrote " << per_pair * 56 << " hits, " << abc.size() << " undirected edges" << std::endl;
    return 0;
}

int run(const std::string& dir) {
    options opt;
    std::istringstream keys(
        "[Docs]\nMaxDomDelta = 20\nWgtMargin = 200\nMaxParalouges = 2\nHugeParalouges = 6\n"
        "MaxDocSize = 10\nOnlyComplete = 0\nLogit = 0\n");
    opt.read(keys, false);
    SpeciesPhylogeny tree(opt);
    std::ifstream tin(dir + "/tree.tab");
    // The readers' traces would dominate the timings: the error stream is silenced.
    std::cerr.setstate(std::ios::failbit);
    tree.read_tables(tin);
    using clock = std::chrono::steady_clock;
    std::clock_t c0 = std::clock();
    auto t0 = clock::now();
    SpeciesDorthoGraph g(tree, 30.0f, 20);
    g.read_blast_dir(dir);
    auto t1 = clock::now();
    std::clock_t c1 = std::clock();
    long edges = 0;
    for (int a : g.species())
        for (int b : g.species())
            if (g.graph(a, b))
                for (const auto& l : g.graph(a, b)->m_edges)
                    edges += long(l.size());
    const long kb_read = peak_kb();
    MapDorthoClusts m1(g, opt, "Docs");
    m1.calc();
    auto t2 = clock::now();
    std::clock_t c2 = std::clock();
    const long kb_edges = peak_kb();
    MapHDocs m2(g, opt, "Docs");
    m2.calc();
    auto t3 = clock::now();
    std::clock_t c3 = std::clock();
    std::cerr.clear();
    int live = 0;
    for (char a : m2.m_alive)
        live += a;
    // Docs equal to a planted group: every member of group g, gene (g + 13 s) mod genes in species s.
    std::map<int, int> planted;
    {
        std::ifstream in(dir + "/planted.txt");
        for (int grp, n; in >> grp >> n;)
            planted[grp] = n;
    }
    const int genes = tree.species_size(0);
    auto exact = [&](const std::vector<DorthoClust>& docs, const std::vector<char>* alive) {
        int hits = 0;
        for (std::size_t d = 0; d < docs.size(); ++d) {
            if (alive && !(*alive)[d])
                continue;
            std::set<int> groups;
            int n = 0;
            for (int s = 0; s < 8; ++s)
                for (const OrDomain& dom : docs[d].m_domains[s]) {
                    groups.insert(((dom.gid - 13 * s) % genes + genes) % genes);
                    ++n;
                }
            if (groups.size() == 1 && planted.count(*groups.begin()) && planted[*groups.begin()] == n)
                ++hits;
        }
        return hits;
    };
    std::printf("planted groups %zu; equal to one: MapDorthoClusts %d docs, MapHDocs %d docs\n",
                planted.size(), exact(m1.m_docs, nullptr), exact(m2.m_docs, &m2.m_alive));
    auto sec = [](auto a, auto b) { return std::chrono::duration<double>(b - a).count(); };
    auto cpu = [](std::clock_t a, std::clock_t b) { return double(b - a) / CLOCKS_PER_SEC; };
    std::printf("read_blast_dir   %6.2f s wall %6.2f s cpu  %ld edges  peak %ld MB\n", sec(t0, t1),
                cpu(c0, c1), edges, kb_read / 1024);
    std::printf("MapDorthoClusts  %6.2f s wall %6.2f s cpu  %zu docs  peak %ld MB\n", sec(t1, t2),
                cpu(c1, c2), m1.m_docs.size(), kb_edges / 1024);
    std::printf("MapHDocs         %6.2f s wall %6.2f s cpu  %d docs  peak %ld MB\n", sec(t2, t3), cpu(c2, c3),
                live, peak_kb() / 1024);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc >= 3 && std::string(argv[1]) == "gen")
        return gen(argv[2], argc > 3 ? std::atol(argv[3]) : 1000000L, argc > 4 ? std::atoi(argv[4]) : 5000);
    if (argc == 3 && std::string(argv[1]) == "run")
        return run(argv[2]);
    std::cerr << "usage: ortho_bench gen <dir> [hits] [genes] | ortho_bench run <dir>" << std::endl;
    return 2;
}
