// family_profile: a profile HMM of a protein family (or one copy per subfamily) trained from random
// star alignments, with each sequence's class, Viterbi score and aligned row; optionally pairs aligned
// by integer dynamic programming and by a pair HMM trained by EM.
//
//   family_profile <option file>      (see examples/README.md for the scopes, keys and tables)
#include "ExampleIO.h"
#include "HMMDecode.h"
#include "HMMProfiler.h"
#include "ProfileAlign.h"
#include "ProfileHMM.h"
#include "Random.h"
#include "SeqAlign.h"
#include "SymbolSequence.h"
#include "options.h"

#include <cmath>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string fmt(float v) {
    std::ostringstream o;
    o << std::setprecision(9) << v;
    return o.str();
}

bool read_proteins(const std::string& file, ProteinSequenceSet& seqs) {
    std::ifstream in(file);
    if (!in) {
        std::cerr << "Cannot open " << file << std::endl;
        return false;
    }
    seqs.read_fasta_file(in);
    for (std::string& n : seqs.m_names)
        n = n.substr(0, n.find_first_of(" \t\r"));
    return true;
}

// Opens the output named by Tables::<key> if the key is given; false only when it cannot be written.
bool open_out(options& opts, const char* key, std::ofstream& out) {
    if (!opts.has_option("Tables", key))
        return true;
    const std::string name = opts.get_str("Tables", key, true);
    out.open(name);
    if (!out)
        std::cerr << "Cannot write " << name << std::endl;
    return static_cast<bool>(out);
}

// Transitions (from to p, every edge in out-list order) and emissions (state p_0 .. p_(A-1) of each
// active emitting state) as hmm_decode reads them.
void write_tables(const HMM& h, std::ofstream& tr, std::ofstream& em) {
    for (int k = 0; k < h.num_states(); ++k) {
        if (!h.m_states[k].m_active)
            continue;
        if (tr.is_open())
            for (const HMMAdjacency& a : h.m_adj[k])
                tr << a.from << '\t' << a.to << '\t' << fmt(a.p) << '\n';
        if (em.is_open() && !h.m_states[k].m_silent) {
            em << k;
            for (float p : h.m_states[k].m_emit)
                em << '\t' << fmt(p);
            em << '\n';
        }
    }
}

// The aligned rows of the sequences flagged in `use` on one profile.
void write_rows(const ProfileHMM& prof, const ProteinSequenceSet& seqs, std::vector<bool>& use,
                std::vector<std::string>& rows) {
    SeqMultiAlign msa;
    ProfileHMMMultiAlign(prof).align(seqs, use, msa);
    for (int r = 0; r < msa.num_rows(); ++r) {
        // The set holds plain symbol strings: letters come through the protein coding.
        ProteinSequence letters;
        letters.assign(seqs[msa.seq_id(r)]);
        rows[msa.seq_id(r)] = msa.row_text(r, letters);
    }
}

int run_family(options& opts, const SymbSubstMat& mat, int gap) {
    ProteinSequenceSet seqs;
    if (!read_proteins(opts.get_str("Tables", "Fasta", true), seqs))
        return 1;
    if (seqs.empty()) {
        std::cerr << "No sequences in " << opts.get_str("Tables", "Fasta", true) << std::endl;
        return 1;
    }
    const int max_iter = opts.get_int("Profile", "MaxIter", true);
    const float match_factor = opts.get_float("Profile", "MatchFactor", true);
    const int classes = opts.get_int("Profile", "TargetNumOfClasses", true);
    const std::size_t n = seqs.size();
    std::vector<int> cls(n, 0);
    std::vector<std::string> rows(n);
    std::unique_ptr<FamHMMProfiler> fam;
    std::unique_ptr<SubFamHMMProfiler> sub;
    const HMM* model = nullptr;
    if (classes <= 1) {
        fam.reset(new FamHMMProfiler(seqs, opts, "Profile", mat, gap, max_iter, match_factor,
                                     opts.get_float("Profile", "EMEpsilon", true)));
        fam->profile();
        if (fam->m_best_profile.m_finish_state < 0) {
            std::cerr << "No profile was trained: Profile::MaxIter must be 2 or more" << std::endl;
            return 1;
        }
        model = &fam->m_best_profile;
        std::vector<bool> use(n, true);
        write_rows(fam->m_best_profile, seqs, use, rows);
    } else {
        sub.reset(new SubFamHMMProfiler(seqs, opts, "Profile", mat, gap, max_iter, match_factor));
        sub->profile();
        model = &sub->m_model;
        cls = sub->m_class_of_seq;
        KProfileHMM& k = sub->m_model;
        for (int c = 0; c < k.num_copy_ids(); ++c) {
            std::vector<bool> use(n, false);
            for (std::size_t i = 0; i < n; ++i)
                use[i] = cls[i] == c;
            int len = 0;
            for (int s = 0; s < k.num_states(); ++s)
                len += k.m_states[s].m_active && k.m_state_copy[s] == c && k.m_state_type[s] == ProfileHMM::M;
            ProfileHMM prof(k.m_alphabet_size, len);
            k.get_prof_hmm(c, prof);
            write_rows(prof, seqs, use, rows);
        }
    }

    std::ofstream oc, oa, om, ot, oe;
    if (!open_out(opts, "OutClasses", oc) || !open_out(opts, "OutAlign", oa) ||
        !open_out(opts, "OutModel", om) || !open_out(opts, "OutTransitions", ot) ||
        !open_out(opts, "OutEmissions", oe))
        return 1;
    if (oc.is_open()) {
        oc << "name\tclass\tviterbi\n";
        ViterbiDecode vit(*model);
        for (std::size_t i = 0; i < n; ++i) {
            HMMPath path;
            const float v = vit.decode(seqs[i], path);
            oc << seqs.m_names[i] << '\t' << cls[i] << '\t' << fmt(v) << '\n';
        }
    }
    if (oa.is_open()) {
        oa << "name\trow\n";
        for (std::size_t i = 0; i < n; ++i)
            oa << seqs.m_names[i] << '\t' << rows[i] << '\n';
    }
    if (om.is_open())
        model->print(om);
    write_tables(*model, ot, oe);
    return 0;
}

int run_pairs(options& opts, const SymbSubstMat& mat, int gap) {
    ProteinSequenceSet seqs;
    if (!read_proteins(opts.get_str("Tables", "Pairs", true), seqs))
        return 1;
    const int A = mat.m_max_symbol;
    PairAlignParams params(A);
    {
        std::ifstream subs(opts.get_str("Tables", "PairSubs", true)),
            tran(opts.get_str("Tables", "PairTran", true));
        if (!subs || !tran) {
            std::cerr << "Cannot open Tables::PairSubs or Tables::PairTran" << std::endl;
            return 1;
        }
        params.read(subs, tran);
        params.m_x_gap.assign(A, -logf(static_cast<float>(A)));
        params.m_y_gap = params.m_x_gap;
    }
    const std::size_t pairs = seqs.size() / 2;
    if (seqs.size() % 2)
        std::cerr << "Odd number of records in Tables::Pairs: the last is left out" << std::endl;
    ProfileAlignDirect direct;
    const int passes = opts.get_int("Pair", "EMPasses", false);
    for (int pass = 0; pass < passes; ++pass) {
        PairAlignParams counts(A);
        for (std::size_t p = 0; p < pairs; ++p)
            direct.direct_prof_align(seqs[2 * p], seqs[2 * p + 1], params, counts, false);
        counts.normalize();
        params = counts;
    }
    std::ofstream out;
    if (!open_out(opts, "OutPairs", out))
        return 1;
    if (out.is_open()) {
        out << "x\ty\tdp_score\tdp_align\tforward\n";
        DynProgAlign dp(mat, gap);
        PairAlignParams unused(A);
        for (std::size_t p = 0; p < pairs; ++p) {
            SeqAlignment al;
            const int score = dp.align(seqs[2 * p], seqs[2 * p + 1], al);
            out << seqs.m_names[2 * p] << '\t' << seqs.m_names[2 * p + 1] << '\t' << score << '\t';
            bool first = true;
            for (const auto& pr : al) {
                out << (first ? "" : ",") << pr.first << ':' << pr.second;
                first = false;
            }
            out << '\t' << fmt(direct.direct_prof_align(seqs[2 * p], seqs[2 * p + 1], params, unused, true))
                << '\n';
        }
    }
    std::ofstream os, ot;
    if (!open_out(opts, "OutPairSubs", os) || !open_out(opts, "OutPairTran", ot))
        return 1;
    if (os.is_open() || ot.is_open()) {
        std::ostringstream s, t;
        params.write(s, t);
        if (os.is_open())
            os << s.str();
        if (ot.is_open())
            ot << t.str();
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "family_profile", opts))
        return rc;
    Random::reset(opts.get_int("Random", "Seed", false));
    const SymbSubstMat mat(opts, "Subst");
    const int gap = opts.get_int("Profile", "Gap", true);
    if (opts.has_option("Tables", "Fasta") && run_family(opts, mat, gap) != 0)
        return 1;
    if (opts.has_option("Tables", "Pairs") && run_pairs(opts, mat, gap) != 0)
        return 1;
    return 0;
}
