// hmm_decode: a discrete HMM from tables, optionally trained by Baum-Welch on FASTA sequences, then
// the Viterbi path and score and the forward and backward totals of each sequence.
//
//   hmm_decode <option file>      (see examples/README.md for the scopes, keys and tables)
#include "ExampleIO.h"
#include "HMM.h"
#include "HMMDecode.h"
#include "HMMEMBase.h"
#include "SymbolSequence.h"
#include "options.h"

#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <list>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Digits '0'..'9' as codes 0..9, every digit of a line kept (a 0 does not end the line). Other
// characters get code 10 with a message.
class DigitSequence : public SymbolSequence {
public:
    char decode_char(char code) const override {
        return code >= 0 && code <= 9 ? static_cast<char>('0' + code) : 'X';
    }
    void read_fasta(std::istream& is) {
        clear();
        std::string line;
        for (;;) {
            char c;
            if (!(is >> c) || c == '>')
                return;
            std::getline(is, line);
            line.insert(line.begin(), c);
            for (char d : line) {
                if (d >= '0' && d <= '9') {
                    push_back(static_cast<char>(d - '0'));
                } else if (d != '\r' && d != ' ' && d != '\t') {
                    std::cerr << "Unknown digit code " << d << "\n";
                    push_back(10);
                }
            }
        }
    }
};

// Reads every entry of a FASTA stream with the sequence class Seq; names are the headers up to
// their first blank.
template <class Seq>
void read_fasta_set(std::istream& is, std::vector<std::string>& names, SymbolSequenceSet& seqs) {
    char c;
    while (is.get(c) && c != '>') {
    }
    std::string header;
    while (is && std::getline(is, header)) {
        names.push_back(header.substr(0, header.find_first_of(" \t\r")));
        Seq s;
        s.read_fasta(is);
        seqs.push_back(s);
    }
}

std::string fmt(float v) {
    std::ostringstream o;
    o << std::setprecision(9) << v;
    return o.str();
}

} // namespace

int main(int argc, char** argv) {
    options opts;
    if (const int rc = read_option_file(argc, argv, "hmm_decode", opts))
        return rc;

    const std::string alphabet = opts.get_str("Model", "Alphabet", true);
    if (alphabet != "protein" && alphabet != "dna" && alphabet != "digits") {
        std::cerr << "Model::Alphabet must be protein, dna or digits, not " << alphabet << std::endl;
        return 1;
    }
    const int A = opts.get_int("Model", "AlphabetSize", true);
    const int S = opts.get_int("Model", "States", true);
    std::vector<bool> silent(S > 0 ? S : 1, false);
    if (std::vector<int>* ids = opts.get_ints("Model", "Silent", false))
        for (int k : *ids)
            if (k > 0 && k < S)
                silent[k] = true;

    HMM model(A);
    for (int k = 1; k < S; ++k)
        model.new_state(silent[k]);
    model.add_finish_state();

    // Edges in file order, each remembered by its place in the out-list of its source.
    std::vector<std::list<HMMAdjacency>::iterator> edges;
    std::vector<int> emit_states;
    {
        std::ifstream trans, emis;
        if (!open_in(trans, opts.get_str("Tables", "Transitions", true)) ||
            !open_in(emis, opts.get_str("Tables", "Emissions", true)))
            return 1;
        int from, to;
        float p;
        while (trans >> from >> to >> p) {
            if (from < 0 || from > S || to < 0 || to > S) {
                std::cerr << "Bad edge " << from << " " << to << ": states are 0.." << S << std::endl;
                return 1;
            }
            model.add_transition(from, to, p);
            edges.push_back(std::prev(model.m_adj[from].end()));
        }
        int k;
        while (emis >> k) {
            if (k <= 0 || k >= S) {
                std::cerr << "Bad emitting state " << k << std::endl;
                return 1;
            }
            for (int b = 0; b < A; ++b) {
                if (!(emis >> p)) {
                    std::cerr << "Short emission line of state " << k << std::endl;
                    return 1;
                }
                model.set_state_emission(k, b, p);
            }
            emit_states.push_back(k);
        }
    }

    std::vector<std::string> names;
    SymbolSequenceSet seqs;
    {
        std::ifstream fa;
        if (!open_in(fa, opts.get_str("Tables", "Sequences", true)))
            return 1;
        if (alphabet == "protein")
            read_fasta_set<ProteinSequence>(fa, names, seqs);
        else if (alphabet == "dna")
            read_fasta_set<DnaCodeSequence>(fa, names, seqs);
        else
            read_fasta_set<DigitSequence>(fa, names, seqs);
    }

    if (opts.has_option("Train", "Eps")) {
        HMMEMBase em(model, opts.get_float("Train", "Eps", true), opts.get_int("Train", "Logit", false) != 0);
        const float ll = em.local_opt(seqs);
        std::cout << "EM LL " << fmt(ll) << std::endl;
        std::ofstream ot(opts.get_str("Tables", "OutTransitions", true));
        std::ofstream oe(opts.get_str("Tables", "OutEmissions", true));
        if (!ot || !oe) {
            std::cerr << "Cannot write the trained tables" << std::endl;
            return 1;
        }
        for (const auto& e : edges)
            ot << e->from << '\t' << e->to << '\t' << fmt(e->p) << '\n';
        for (int k : emit_states) {
            oe << k;
            for (int b = 0; b < A; ++b)
                oe << '\t' << fmt(model.m_states[k].m_emit[b]);
            oe << '\n';
        }
    }

    const bool backward =
        !opts.has_option("Decode", "Backward") || opts.get_int("Decode", "Backward", false) != 0;
    std::ofstream out(opts.get_str("Tables", "OutDecode", true));
    if (!out) {
        std::cerr << "Cannot write " << opts.get_str("Tables", "OutDecode", true) << std::endl;
        return 1;
    }
    out << "name\tlength\tviterbi\tforward\tbackward\tpath\n";
    ViterbiDecode vit(model);
    ForwardDecode fwd(model);
    BackwardDecode bwd(model);
    for (std::size_t n = 0; n < seqs.size(); ++n) {
        HMMPath path;
        const float v = vit.decode(seqs[n], path);
        const float f = fwd.decode(seqs[n]);
        out << names[n] << '\t' << seqs[n].size() << '\t' << fmt(v) << '\t' << fmt(f) << '\t'
            << (backward ? fmt(bwd.decode(seqs[n])) : std::string("NA")) << '\t';
        bool first = true;
        for (int s : path) {
            out << (first ? "" : ",") << s;
            first = false;
        }
        out << '\n';
    }
    std::cerr << seqs.size() << " sequences decoded" << std::endl;
    return 0;
}
