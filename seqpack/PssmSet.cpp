// PssmSet: the pssmk and pssmd readers.
#include "PssmSet.h"

#include "error.h"
#include "idbound.h"

#include <fstream>
#include <iostream>

static constexpr char kSrc[] = "PssmSet";

void PssmSet::read(const std::string& key, const std::string& data, int offset, int have_scores, float prior,
                   bool logodds) {
    std::ifstream key_in(key), data_in(data);
    if (!key_in || !data_in)
        VESK_FATAL(kSrc, "cannot open pssm files " << key << " " << data);
    read(key_in, data_in, offset, have_scores, prior, logodds);
}

void PssmSet::read(std::istream& key, std::istream& data, int offset, int have_scores, float prior,
                   bool logodds) {
    const int shift = size();
    int id;
    int row = 0;
    while (key >> id) {
        ++row;
        int bid = 0, from, to, direct;
        float sc = 0.0f;
        std::string consensus;
        if (have_scores && !(key >> bid))
            break;
        if (!(key >> consensus >> from >> to))
            break;
        if (have_scores && !(key >> sc))
            break;
        if (!(key >> direct))
            break;
        if (id < 0)
            continue;
        if (!input_id_ok(static_cast<long long>(id) + shift))
            VESK_FATAL(kSrc, "Bad pssm id " << id << " in key row " << row);
        id += shift;
        std::cerr << "read id " << id << " bid " << bid << " sc " << sc << " direct " << direct << std::endl;
        if (id >= size()) {
            m_consensus.resize(static_cast<std::size_t>(id) + 1);
            m_pssms.resize(static_cast<std::size_t>(id) + 1);
            m_bic_ids.resize(static_cast<std::size_t>(id) + 1, 0);
        }
        m_consensus[id] = consensus;
        m_bic_ids[id] = bid;
        DnaPSSM& p = m_pssms[id];
        p.m_min_range = offset + from;
        p.m_max_range = offset + to;
        p.m_bidirect = direct != 0;
    }
    std::cerr << "done reading " << size() << " pssms " << std::endl;
    std::cerr << "logodds is " << logodds << std::endl;

    int pos;
    float v[4];
    row = 0;
    while (data >> id >> pos >> v[0] >> v[1] >> v[2] >> v[3]) {
        ++row;
        const long long shifted = static_cast<long long>(id) + shift;
        if (shifted < 0 || shifted >= size())
            VESK_FATAL(kSrc, "Read data on pssm id " << shifted << " but max id is " << size());
        id = static_cast<int>(shifted);
        if (pos < 0)
            continue;
        // A position sizes the PSSM's columns.
        if (!input_id_ok(pos))
            VESK_FATAL(kSrc, "Bad pssm position " << pos << " in data row " << row);
        DnaPSSM& p = m_pssms[id];
        // A row resizes to its position + 1: a lower position than before cuts the columns behind it.
        p.resize(pos + 1);
        DnaProbVec& col = p.m_profile[pos];
        for (int b = 0; b < 4; ++b) {
            if (logodds) {
                col.m_log[b] = v[b];
                col.m_prob[b] = 0.0f;
            } else {
                col.m_prob[b] = v[b] + prior;
            }
        }
        if (!logodds)
            col.normalize();
    }
}

void PssmSet::write(std::ostream&, std::ostream&) const {}
