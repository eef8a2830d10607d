// Position-specific scoring matrices: one column (DnaProbVec) and the matrix with its window and
// strand flag (DnaPSSM): likelihoods, best-site scans, EM counting and the consensus.
#ifndef VESK_SEQPACK_DNAPSSM_H
#define VESK_SEQPACK_DNAPSSM_H

#include "LogSpace.h"

#include <ostream>
#include <string>
#include <vector>

// Probabilities of A, C, G, T (alphabetical order, unlike the bit order of DnaSeqChar) and their
// natural logarithms.
class DnaProbVec {
public:
    DnaProbVec();

    // Divides by the sum; a log of a probability at or below 0 is -3.4028235e+36.
    void normalize();
    // Takes the log half as input and normalises it in log space.
    void normalize_log();
    float get_entropy() const;
    float get_max_log_prob() const;
    // Copies four prior values in; a log of a value at or below 0 is -3.4028235e+38.
    void reset(const std::vector<float>& prior);

    float m_prob[4];
    float m_log[4];
};

// The four probabilities rounded to two decimals, tab-separated, and a line end.
std::ostream& operator<<(std::ostream& os, const DnaProbVec& v);

class DnaPSSM {
public:
    static const float CONSENSUS_SINGLE_THRESH;
    static const float CONSENSUS_DOUBLE_THRESH;
    // Score of an unknown letter ('N', '*') in the scans: log(1/4).
    static constexpr float kUnknownLog = -1.38629f;
    static constexpr float kLogZero = -3.4028235e+38f;
    static constexpr float kScanStart = -3.4028235e+36f;

    DnaPSSM() : m_min_range(0), m_max_range(1000000), m_bidirect(false) {}

    int width() const { return static_cast<int>(m_profile.size()); }
    // Sets the number of columns; new ones are uniform.
    void resize(int n);
    double get_max_ll() const;

    // Forward (and reverse-complement) log likelihood of the word at its start; a letter other than
    // A, C, G, T gives -3.4028235e+38.
    void calc_like(const std::string& word, float& ll) const;
    void calc_like_rc(const std::string& word, float& ll) const;
    void calc_like(std::string::const_iterator pos, float& ll) const;
    void calc_like_rc(std::string::const_iterator pos, float& ll) const;

    // Best site of the window: returns its start, sets `best` and the strand `dir` (1 or -1).
    int max_like_match(const std::string& seq, float& best, int& dir) const;
    // Scores of all starts of the window (E step).
    void update_like_vec(const std::string& seq, std::vector<float>& ll, std::vector<float>& diff,
                         std::vector<signed char>& dirs) const;

    // Adds one site to the probability half.
    void count(std::string::const_iterator pos, float weight, int dir);
    void count_weighted(const std::string& seq, const std::vector<float>& w,
                        const std::vector<signed char>& dirs, float thresh);
    void count_log_weighted(const std::string& seq, const std::vector<float>& w,
                            const std::vector<signed char>& dirs, float thresh);

    void normalize();
    void normalize_logs();
    void reset_prior(const std::vector<float>& prior);

    float dot_product(const DnaPSSM& other) const;
    float log_dot_product(const DnaPSSM& other) const;
    // 2 * width random swaps of two columns.
    void permut_randomize();

    std::string get_consensus() const;
    // One line a column: id, column index, the column's stream form.
    void write_tab(std::ostream& os, int id) const;

    std::vector<DnaProbVec> m_profile;
    int m_min_range;
    int m_max_range;
    bool m_bidirect;

private:
    // First start and end (excluded) of the scan window.
    void window(int length, int& first, int& end) const;
    // Sums of one site without early stop (a NUL gives -3.4028235e+38).
    float forward_score(const char* site) const;
    float reverse_score(const char* site) const;
    template <class Add>
    void count_sites(const std::string& seq, const std::vector<float>& w,
                     const std::vector<signed char>& dirs, float thresh, Add add);
};

// Debug form: the window and strand flag on the error stream, then the columns and their logs.
std::ostream& operator<<(std::ostream& os, const DnaPSSM& pssm);

#endif
