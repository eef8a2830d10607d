// DorthoEdge, OrDomain, DomainOrthoGraph and SpeciesDorthoGraph: domain similarity hits between species.
#ifndef VESK_BIC_SPECIESDORTHOGRAPH_H
#define VESK_BIC_SPECIESDORTHOGRAPH_H

#include "SpeciesPhylogeny.h"

#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

// One hit from a domain (gene, start, end) of one species to a domain of another. The 16-bit fields
// keep the record small: hit tables run to millions of lines.
struct DorthoEdge {
    std::uint16_t from_gid;
    std::uint16_t from_start;
    std::uint16_t from_end;
    std::uint16_t to_gid;
    std::uint16_t to_start;
    std::uint16_t to_end;
    float score;

    // "<from_gid> (<from_start>,<from_end>) -> <to_gid> (<to_start>,<to_end>) +<score>"
    void print(std::ostream& os) const;
};

std::ostream& operator<<(std::ostream& os, const DorthoEdge& e);

struct OrDomain {
    std::uint16_t gid;
    std::uint16_t start;
    std::uint16_t end;
};

// The hits of one ordered species pair (a, b), listed by gene of a.
class DomainOrthoGraph {
public:
    DomainOrthoGraph(SpeciesPhylogeny& tree, int species_a, int species_b, int genes_a, int domain_slack);
    virtual ~DomainOrthoGraph() = default;

    // A null model hook; the plain graph keeps its edges.
    virtual void randomize(int) {}
    // Records: species a, species b, gene a, start a, end a, gene b, start b, end b, score; only this
    // graph's own pair is kept.
    void read_table(std::istream& is);
    // Eleven-column similarity lines; a line is taken when its last value is strictly above `threshold`.
    void read_blast(std::istream& is, float threshold);
    void insert_edge(std::uint16_t from_gid, std::uint16_t from_start, std::uint16_t from_end,
                     std::uint16_t to_gid, std::uint16_t to_start, std::uint16_t to_end, float score);
    // Hits leaving gene `gid` of species a (empty past the table).
    const std::vector<DorthoEdge>& edges_of(int gid) const;

    SpeciesPhylogeny& m_tree;
    int m_species_a;
    int m_species_b;
    std::vector<std::vector<DorthoEdge>> m_edges;
    int m_domain_slack;
};

// The hits between all species: one DomainOrthoGraph per ordered pair of species nodes.
class SpeciesDorthoGraph {
public:
    SpeciesDorthoGraph(SpeciesPhylogeny& tree, float score_bound, int domain_slack);

    // All-species records (species a, gene, start, end, species b, gene, start, end, score), kept when
    // the score is strictly below the bound, in the graph (a, b).
    void read_table(std::istream& is);
    // "<dir>/<name of a>.<name of b>.fixed" for every ordered pair of distinct species.
    void read_blast_dir(const std::string& dir);

    // The graph of (s, t); null when either is no species.
    DomainOrthoGraph* graph(int s, int t) const;
    // Hits from gene `gid` of species s to species t (empty when there is no such graph).
    const std::vector<DorthoEdge>& edges(int s, int gid, int t) const;
    // Ids of the species nodes, ascending.
    const std::vector<int>& species() const { return m_species; }
    int domain_slack() const { return m_domain_slack; }

    SpeciesPhylogeny& m_tree;
    std::vector<std::vector<std::unique_ptr<DomainOrthoGraph>>> m_graphs;
    float m_score_bound;

private:
    std::vector<int> m_species;
    int m_domain_slack;
};

#endif
