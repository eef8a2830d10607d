// ExhaustScoreKMer: the k-mer index of one promoter window after another, walked entry by entry.
#include "ExhaustScoreKMer.h"

#include "error.h"
#include "options.h"

static constexpr char kSrc[] = "ExhaustScoreKMer";

ExhaustScoreKMer::ExhaustScoreKMer(ExpSeqDB& db, const ds_bitvec& genes, options& opts,
                                   const std::string& scope)
    : m_db(db), m_genes(genes), m_k(opts.get_int(scope, "K", true)),
      m_step(opts.get_int(scope, "Step", true)), m_range(opts.get_int(scope, "RangeInterval", true)),
      m_max_promoter(opts.get_int(scope, "MaxPromoter", true)),
      m_min_promoter(opts.get_int(scope, "MinPromoter", true)),
      m_min_gap(opts.get_int(scope, "MinGapSize", true)), m_max_gap(opts.get_int(scope, "MaxGapSize", true)),
      m_kmers(db.m_universe, db.m_genome), m_start(0), m_valid(false) {}

bool ExhaustScoreKMer::build() {
    m_kmers.init(m_k, 0, m_min_gap, m_max_gap, m_genes, m_start, m_start + m_range);
    m_iter = m_kmers.get_pat_begin();
    return m_iter != m_kmers.get_pat_end();
}

void ExhaustScoreKMer::restart(const ds_bitvec& genes) {
    m_genes = genes;
    m_start = m_min_promoter;
    m_valid = build();
    // A window without k-mers is passed over like an exhausted one.
    while (!m_valid && m_step > 0 && m_start + m_step <= m_max_promoter - m_range) {
        m_start += m_step;
        m_valid = build();
    }
}

ExhaustScoreKMer& ExhaustScoreKMer::operator++() {
    if (!m_valid)
        VESK_FATAL(kSrc, "Trying to ++ invalid state");
    ++m_iter;
    while (m_iter == m_kmers.get_pat_end()) {
        m_start += m_step;
        if (m_step <= 0 || m_start > m_max_promoter - m_range) {
            m_valid = false;
            break;
        }
        build();
    }
    return *this;
}
