// Template bodies of DnaSeqPromoter<S> and DnaSeqGenomePromoters<S>.
#ifndef VESK_SEQPACK_DNASEQGENOMEPROMOTERS_TCC
#define VESK_SEQPACK_DNASEQGENOMEPROMOTERS_TCC
#include "Random.h"
#include "VarUniverse.h"

#include <iostream>
#include <string>
#include <utility>

template <class S> bool DnaSeqPromoter<S>::read_fasta(VarUniverse& univ, std::istream& in, bool use_orf2) {
    char c;
    if (!(in >> c))
        return false;
    std::string name;
    if (c != '>')
        name.push_back(c);
    // The name ends at a blank or the line end; the rest of the line is skipped.
    bool line_done = false;
    while (in.get(c)) {
        if (c == '\n') {
            line_done = true;
            break;
        }
        if (c == ' ' || c == '\t' || c == '\r')
            break;
        name.push_back(c);
    }
    if (!line_done) {
        std::string rest;
        std::getline(in, rest);
    }
    m_gene_var_id = VarUniverse::find(use_orf2 ? univ.m_alias_to_id : univ.m_short_to_id, name);
    if (m_gene_var_id == -1)
        std::cerr << "unkown gene, the name is " << name << std::endl;
    S::read_fasta(in);
    m_effective_length = S::get_length();
    m_is_empty = false;
    return true;
}

template <class S>
void DnaSeqGenomePromoters<S>::read_fasta(int length, VarUniverse& univ, std::istream& in, bool use_orf2,
                                          bool post_slack) {
    m_zero_offset = -length;
    m_promoters.assign(static_cast<std::size_t>(univ.size()), DnaSeqPromoter<S>());
    while (in.good()) {
        DnaSeqPromoter<S> scratch;
        if (!scratch.read_fasta(univ, in, use_orf2))
            break;
        const int id = scratch.get_gene_var_id();
        if (id < 0 || id >= id_space_size()) {
            std::cerr << "unkown gene\n";
            continue;
        }
        if (scratch.get_length() < length) {
            if (post_slack)
                scratch.push_post_slack(length);
            else
                scratch.push_slack(length);
        } else if (scratch.get_length() > length) {
            scratch.pre_prune(length);
        }
        m_promoters[id] = std::move(scratch);
    }
    for (int id = 0; id < id_space_size(); ++id) {
        if (m_promoters[id].is_empty()) {
            const std::string none;
            const std::string& name =
                id < static_cast<int>(univ.m_short_names.size()) ? univ.m_short_names[id] : none;
            std::cerr << "no promoter seq for " << id << " " << name << std::endl;
        }
    }
}

template <class S> void DnaSeqGenomePromoters<S>::randomize() {
    for (int i = id_space_size() - 1; i >= 1; --i) {
        const double u = Random::bits() / 4294967295.0;
        const int j = static_cast<int>(u * i + 0.99);
        std::swap(m_promoters[i], m_promoters[j]);
    }
}

#endif
