// The family and subfamily profilers.
#include "HMMProfiler.h"

#include "LogSpace.h"
#include "Random.h"

#include <cmath>
#include <iostream>

static double uniform() { return Random::bits() / 4294967295.0; }

FamHMMProfiler::FamHMMProfiler(ProteinSequenceSet& seqs, options& opts, const std::string& scope,
                               const SymbSubstMat& mat, int gap, int max_iter, float match_factor,
                               float em_eps)
    : m_seqs(seqs), m_profile(mat.m_max_symbol, 0), m_best_profile(mat.m_max_symbol, 0),
      m_init(new ProfileHMMInitRandStar(mat, gap, max_iter, match_factor,
                                        opts.get_int(scope, "Logit", true) != 0)),
      m_em(m_profile, em_eps, opts.get_int(scope, "EMLogit", true) != 0), m_iter(0), m_best_ll(kLogZero),
      m_best_worst_seq_p(kLogZero), m_logit(opts.get_int(scope, "Logit", true) != 0) {
    m_init->attach_profiler(this);
}

void FamHMMProfiler::profile() {
    m_best_ll = kLogZero;
    while (m_init->carry_on()) {
        ++m_iter;
        std::cerr << "FamP call reinit\n";
        m_init->reinit();
        std::cerr << "FamP after init hmm :\n";
        m_profile.print(std::cerr);
        std::cerr << "FamP call EM\n";
        const float ll = m_em.local_opt(m_seqs);
        if (ll > m_best_ll) {
            m_best_ll = ll;
            m_best_worst_seq_p = m_em.m_worst_seq_p;
            std::cerr << "New best at iter " << m_iter << " ll = " << ll
                      << " new worst seq p = " << m_best_worst_seq_p << "\n";
            m_best_profile = m_profile;
        }
        std::cerr << "Done with iter " << m_iter << "\n";
    }
}

SubFamHMMProfiler::SubFamHMMProfiler(ProteinSequenceSet& seqs, options& opts, const std::string& scope,
                                     const SymbSubstMat& mat, int gap, int max_iter, float match_factor)
    : m_num_classes(opts.get_int(scope, "TargetNumOfClasses", true)), m_seqs(seqs),
      m_model(mat.m_max_symbol, 0, 0), m_best_model(mat.m_max_symbol, 0, 0), m_target(mat.m_max_symbol, 0),
      m_init(new ProfileHMMInitRandStar(mat, gap, max_iter, match_factor,
                                        opts.get_int(scope, "Logit", true) != 0)),
      m_em(m_model, opts.get_float(scope, "EMEpsilon", true), opts.get_int(scope, "EMLogit", true) != 0),
      m_viterbi(m_model), m_random_copy_factor(opts.get_float(scope, "RandomCopyFactor", true)),
      m_cooling_factor(opts.get_float(scope, "CoolingFactor", true)),
      m_logit(opts.get_int(scope, "Logit", true) != 0), m_best_ll(kLogZero) {
    m_init->attach_profiler(this);
    m_init->reinit();
}

void SubFamHMMProfiler::profile() {
    for (int c = 0; c < m_num_classes; ++c)
        m_model.add_prof_hmm(m_target);
    std::cerr << "max state id is " << m_model.num_states() - 1 << "\n";
    m_init->reinit();
    m_best_ll = kLogZero;
    int iter = 0;
    while (m_init->carry_on()) {
        ++iter;
        std::cerr << "SubFamP call reinit\n";
        m_init->reinit();
        if (m_random_copy_factor <= uniform()) {
            const int worst = find_worst_class();
            std::cerr << "SubFamP perturbing copy " << worst << "\n";
            m_model.del_prof_hmm(worst);
            m_model.add_prof_hmm(m_target);
        } else {
            for (int c = 0; c < m_model.num_copy_ids(); ++c) {
                std::cerr << "SubFamP perturbing copy " << c << "\n";
                m_init->reinit();
                m_model.del_prof_hmm(c);
                m_model.add_prof_hmm(m_target);
            }
        }
        if (m_logit) {
            std::cerr << "SubFamP after init hmm :\n";
            m_model.print(std::cerr);
        }
        force_start_prior();
        std::cerr << "SubFamP call EM\n";
        const float ll = m_em.local_opt(m_seqs);
        if (m_logit)
            calc_classif();
        if (ll <= m_best_ll) {
            const double u = uniform();
            const double a = std::exp(-static_cast<double>(iter) * m_cooling_factor);
            if (a < u)
                m_model = m_best_model;
        } else {
            m_best_ll = ll;
            std::cerr << "New best at iter " << iter << " ll = " << ll << "\n";
            m_best_model = m_model;
        }
        std::cerr << "Done with iter " << iter << "\n";
    }
    calc_classif();
}

int SubFamHMMProfiler::find_worst_class() const {
    std::vector<float> mass(m_model.num_copy_ids(), 0.0f);
    for (const HMMAdjacency& a : m_model.m_adj[0])
        mass[m_model.m_state_copy[a.to]] += a.p;
    int worst = -1;
    for (int c = 0; c < m_model.num_copy_ids(); ++c)
        if (m_model.copy_used(c) && (worst < 0 || mass[c] < mass[worst]))
            worst = c;
    return worst;
}

void SubFamHMMProfiler::force_start_prior() {
    const float p = 1.0f / static_cast<float>(m_model.m_adj[0].size());
    for (HMMAdjacency& a : m_model.m_adj[0]) {
        a.set_adj_prob(p);
        for (HMMAdjacency& b : m_model.m_back_adj[a.to])
            if (b.from == 0)
                b.set_adj_prob(p);
    }
}

void SubFamHMMProfiler::calc_classif() {
    std::cerr << "will calc classes\n";
    m_class_count.assign(m_model.num_copy_ids(), 0);
    m_class_of_seq.assign(m_seqs.size(), -1);
    for (std::size_t i = 0; i < m_seqs.size(); ++i) {
        HMMPath path;
        m_viterbi.decode(m_seqs[i], path);
        const int first = path.size() > 1 ? path[1] : -1;
        const int c = first > 0 ? m_model.m_state_copy[first] : -1;
        if (m_logit) {
            std::cerr << "seq " << i << " first state " << first << "\n";
            std::cerr << "class of " << i << " = " << c << "\n";
        }
        m_class_of_seq[i] = c;
        if (c >= 0)
            ++m_class_count[c];
    }
    if (m_logit)
        for (std::size_t c = 0; c < m_class_count.size(); ++c)
            std::cerr << "SubFam Class " << c << " count " << m_class_count[c] << "\n";
}

void SubFamHMMProfiler::dump_m_align(std::ostream& os) {
    for (std::size_t i = 0; i < m_class_of_seq.size(); ++i)
        os << "Seq " << i << " class " << m_class_of_seq[i] << "\n";
    for (int c = 0; c < static_cast<int>(m_class_count.size()); ++c) {
        os << "Class " << c << " size = " << m_class_count[c] << "\n";
        if (m_class_count[c] == 0) {
            os << "EMPTY CLASS\n";
            continue;
        }
        int len = 0;
        for (int k = 0; k < m_model.num_states(); ++k)
            if (m_model.m_states[k].m_active && m_model.m_state_copy[k] == c &&
                m_model.m_state_type[k] == ProfileHMM::M)
                ++len;
        ProfileHMM prof(m_model.m_alphabet_size, len);
        m_model.get_prof_hmm(c, prof);
        std::vector<bool> use(m_seqs.size(), false);
        for (std::size_t i = 0; i < m_class_of_seq.size(); ++i)
            use[i] = m_class_of_seq[i] == c;
        SeqMultiAlign msa;
        ProfileHMMMultiAlign(prof).align(m_seqs, use, msa);
        os << "---------------------------------------\n";
        os << "Class " << c << ":\n";
        for (int r = 0; r < msa.num_rows(); ++r)
            os << m_seqs.get_sequence_name(msa.seq_id(r)) << '\t' << msa.row_text(r, m_seqs[msa.seq_id(r)])
               << "\n";
    }
}
