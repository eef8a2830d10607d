// DnaPSSM: column arithmetic, likelihoods of words, best-site scans, EM counting and the consensus.
#include "DnaPSSM.h"

#include "Random.h"
#include "error.h"

#include <algorithm>
#include <cmath>
#include <iostream>

static constexpr char kSrc[] = "DnaPSSM";

const float DnaPSSM::CONSENSUS_SINGLE_THRESH = 0.6f;
const float DnaPSSM::CONSENSUS_DOUBLE_THRESH = 0.85f;

namespace {
// Alphabetical base index of a letter, or -1. The scans decode letters by the comparison chains
// below instead, without a call.
int base_index(char c) {
    switch (c) {
    case 'A':
        return 0;
    case 'C':
        return 1;
    case 'G':
        return 2;
    case 'T':
        return 3;
    default:
        return -1;
    }
}

int complement_index(char c) {
    const int b = base_index(c);
    return b < 0 ? -1 : 3 - b;
}
} // namespace

DnaProbVec::DnaProbVec() {
    for (int b = 0; b < 4; ++b) {
        m_prob[b] = 0.25f;
        m_log[b] = logf(0.25f);
    }
}

void DnaProbVec::normalize() {
    const float sum = m_prob[0] + m_prob[1] + m_prob[2] + m_prob[3];
    for (int b = 0; b < 4; ++b) {
        m_prob[b] /= sum;
        m_log[b] = m_prob[b] > 0.0f ? logf(m_prob[b]) : -3.4028235e+36f;
    }
}

void DnaProbVec::normalize_log() {
    float s = m_log[0];
    for (int b = 1; b < 4; ++b)
        log_sum_log(s, m_log[b]);
    std::cerr << "normalize, sum = " << s << " 0 " << m_log[0] << " 1 " << m_log[1] << std::endl;
    for (int b = 0; b < 4; ++b) {
        m_log[b] -= s;
        m_prob[b] = expf(m_log[b]);
    }
}

float DnaProbVec::get_entropy() const {
    float h = 0.0f;
    for (int b = 0; b < 4; ++b)
        if (m_prob[b] > 0.0f)
            h -= m_prob[b] * logf(m_prob[b]);
    return h;
}

float DnaProbVec::get_max_log_prob() const {
    return std::max(std::max(m_log[0], m_log[1]), std::max(m_log[2], m_log[3]));
}

void DnaProbVec::reset(const std::vector<float>& prior) {
    for (int b = 0; b < 4; ++b) {
        m_prob[b] = prior[b];
        m_log[b] = prior[b] > 0.0f ? logf(prior[b]) : DnaPSSM::kLogZero;
    }
}

std::ostream& operator<<(std::ostream& os, const DnaProbVec& v) {
    for (int b = 0; b < 4; ++b)
        os << (b ? "\t" : "") << roundf(v.m_prob[b] * 100.0f) / 100.0f;
    return os << "\n";
}

void DnaPSSM::resize(int n) { m_profile.resize(static_cast<std::size_t>(n)); }

double DnaPSSM::get_max_ll() const {
    double sum = 0.0;
    for (const DnaProbVec& col : m_profile)
        sum += col.get_max_log_prob();
    return sum;
}

void DnaPSSM::calc_like(std::string::const_iterator pos, float& ll) const {
    ll = 0.0f;
    for (const DnaProbVec& col : m_profile) {
        const int b = base_index(*pos++);
        if (b < 0) {
            ll = kLogZero;
            return;
        }
        ll += col.m_log[b];
    }
}

void DnaPSSM::calc_like_rc(std::string::const_iterator pos, float& ll) const {
    ll = 0.0f;
    for (int i = width() - 1; i >= 0; --i) {
        const int b = complement_index(*pos++);
        if (b < 0) {
            ll = kLogZero;
            return;
        }
        ll += m_profile[i].m_log[b];
    }
}

void DnaPSSM::calc_like(const std::string& word, float& ll) const {
    if (static_cast<int>(word.size()) < width()) {
        ll = kLogZero;
        return;
    }
    calc_like(word.begin(), ll);
}

void DnaPSSM::calc_like_rc(const std::string& word, float& ll) const {
    if (static_cast<int>(word.size()) < width()) {
        ll = kLogZero;
        return;
    }
    calc_like_rc(word.begin(), ll);
}

void DnaPSSM::window(int length, int& first, int& end) const {
    first = std::max(0, m_min_range);
    end = std::min(m_max_range, length - width());
}

float DnaPSSM::forward_score(const char* site) const {
    float sum = 0.0f;
    const int w = width();
    for (int i = 0; i < w; ++i) {
        const char c = site[i];
        const float* lg = m_profile[i].m_log;
        if (c == 'A')
            sum += lg[0];
        else if (c == 'C')
            sum += lg[1];
        else if (c == 'G')
            sum += lg[2];
        else if (c == 'T')
            sum += lg[3];
        else if (c == '\0')
            return kLogZero;
        else
            sum += kUnknownLog;
    }
    return sum;
}

float DnaPSSM::reverse_score(const char* site) const {
    float sum = 0.0f;
    const int w = width();
    for (int i = 0; i < w; ++i) {
        const char c = site[i];
        const float* lg = m_profile[w - 1 - i].m_log;
        if (c == 'A')
            sum += lg[3];
        else if (c == 'C')
            sum += lg[2];
        else if (c == 'G')
            sum += lg[1];
        else if (c == 'T')
            sum += lg[0];
        else if (c == '\0')
            return kLogZero;
        else
            sum += kUnknownLog;
    }
    return sum;
}

namespace {
// Letter codes of the best-site scan: A C G T 0-3, NUL 4, any other letter 5.
struct ScanCodes {
    unsigned char code[256];
    ScanCodes() {
        for (int i = 0; i < 256; ++i)
            code[i] = 5;
        code[static_cast<unsigned char>('A')] = 0;
        code[static_cast<unsigned char>('C')] = 1;
        code[static_cast<unsigned char>('G')] = 2;
        code[static_cast<unsigned char>('T')] = 3;
        code[0] = 4;
    }
};
const ScanCodes& scan_codes() {
    static const ScanCodes t;
    return t;
}
} // namespace

// The best-site scan of every promoter for every PSSM is the hot loop of scoring. The letters are
// coded once per call and each column's logs are laid out by code for both strands (the reverse
// strand's row i is column width - 1 - i with complemented letters), so the sums are the very
// additions, in the same order, that forward_score and reverse_score make. The reverse strand may
// stop early too when no entry is positive: a sum below the best can then only fall further.
int DnaPSSM::max_like_match(const std::string& seq, float& best, int& dir) const {
    dir = 1;
    const int length = static_cast<int>(seq.size());
    const int w = width();
    if (length < w) {
        best = kLogZero;
        return 0;
    }
    best = kScanStart;
    int at = 0;
    int first, end;
    window(length, first, end);
    if (end <= first)
        return at;

    thread_local std::vector<unsigned char> codes;
    thread_local std::vector<float> fwd, rev;
    codes.resize(static_cast<std::size_t>(length));
    const unsigned char* table = scan_codes().code;
    for (int i = 0; i < length; ++i)
        codes[i] = table[static_cast<unsigned char>(seq[i])];
    fwd.assign(static_cast<std::size_t>(w) * 8, kUnknownLog);
    rev.assign(static_cast<std::size_t>(w) * 8, kUnknownLog);
    bool rev_nonpositive = true;
    for (int i = 0; i < w; ++i) {
        const float* lg = m_profile[i].m_log;
        const float* rl = m_profile[w - 1 - i].m_log;
        for (int b = 0; b < 4; ++b) {
            fwd[8 * i + b] = lg[b];
            rev[8 * i + b] = rl[3 - b];
            rev_nonpositive = rev_nonpositive && !(rl[3 - b] > 0.0f);
        }
    }
    const unsigned char* c = codes.data();
    const float* ft = fwd.data();
    const float* rt = rev.data();
    const bool rev_stop = rev_nonpositive;
    for (int s = first; s < end; ++s) {
        const unsigned char* site = c + s;
        float sum = 0.0f;
        for (int i = 0; i < w; ++i) {
            const unsigned char k = site[i];
            if (k == 4) {
                sum = kLogZero;
                break;
            }
            sum += ft[8 * i + k];
            // Logs are never positive: once below the best, the sum can't come back.
            if (best > sum)
                break;
        }
        if (sum > best) {
            best = sum;
            dir = 1;
            at = s;
        }
        if (m_bidirect) {
            float r = 0.0f;
            for (int i = 0; i < w; ++i) {
                const unsigned char k = site[i];
                if (k == 4) {
                    r = kLogZero;
                    break;
                }
                r += rt[8 * i + k];
                if (rev_stop && best > r)
                    break;
            }
            if (r > best) {
                best = r;
                dir = -1;
                at = s;
            }
        }
    }
    return at;
}

void DnaPSSM::update_like_vec(const std::string& seq, std::vector<float>& ll, std::vector<float>& diff,
                              std::vector<signed char>& dirs) const {
    int first, end;
    window(static_cast<int>(seq.size()), first, end);
    if (end <= first)
        return;
    const std::size_t need = static_cast<std::size_t>(end);
    if (ll.size() < need)
        ll.resize(need, 0.0f);
    if (diff.size() < need)
        diff.resize(need, 0.0f);
    if (dirs.size() < need)
        dirs.resize(need, 0);
    for (int s = first; s < end; ++s) {
        float score = forward_score(seq.data() + s);
        dirs[s] = 1;
        if (m_bidirect) {
            const float r = reverse_score(seq.data() + s);
            if (r > score) {
                score = r;
                dirs[s] = -1;
            }
        }
        if (score > kLogZero) {
            diff[s] = score - ll[s];
            ll[s] = score;
        } else {
            diff[s] = kLogZero;
            ll[s] = kLogZero;
        }
    }
}

void DnaPSSM::count(std::string::const_iterator pos, float weight, int dir) {
    for (DnaProbVec& col : m_profile) {
        const char c = *pos++;
        const int b = dir == 1 ? base_index(c) : complement_index(c);
        if (b >= 0)
            col.m_prob[b] += weight;
    }
}

template <class Add>
void DnaPSSM::count_sites(const std::string& seq, const std::vector<float>& w,
                          const std::vector<signed char>& dirs, float thresh, Add add) {
    int first, end;
    window(static_cast<int>(seq.size()), first, end);
    end = std::min(end, static_cast<int>(std::min(w.size(), dirs.size())));
    const int width_ = width();
    for (int s = first; s < end; ++s) {
        if (!(w[s] >= thresh))
            continue;
        for (int i = 0; i < width_; ++i) {
            const char c = seq[s + i];
            if (dirs[s] == 1) {
                const int b = base_index(c);
                if (b >= 0)
                    add(m_profile[i], b, w[s]);
            } else {
                const int b = complement_index(c);
                if (b >= 0)
                    add(m_profile[width_ - 1 - i], b, w[s]);
            }
        }
    }
}

void DnaPSSM::count_weighted(const std::string& seq, const std::vector<float>& w,
                             const std::vector<signed char>& dirs, float thresh) {
    count_sites(seq, w, dirs, thresh, [](DnaProbVec& col, int b, float x) { col.m_prob[b] += x; });
}

void DnaPSSM::count_log_weighted(const std::string& seq, const std::vector<float>& w,
                                 const std::vector<signed char>& dirs, float thresh) {
    count_sites(seq, w, dirs, thresh, [](DnaProbVec& col, int b, float x) { log_sum_log(col.m_log[b], x); });
}

void DnaPSSM::normalize() {
    for (DnaProbVec& col : m_profile)
        col.normalize();
}

void DnaPSSM::normalize_logs() {
    for (DnaProbVec& col : m_profile)
        col.normalize_log();
}

void DnaPSSM::reset_prior(const std::vector<float>& prior) {
    for (DnaProbVec& col : m_profile)
        col.reset(prior);
}

float DnaPSSM::dot_product(const DnaPSSM& other) const {
    if (width() != other.width())
        VESK_FATAL(kSrc,
                   "dot product support equal sized profiles, extend the code if you ment something else");
    float prod = 1.0f;
    for (int i = 0; i < width(); ++i) {
        float sum = 0.0f;
        for (int b = 0; b < 4; ++b)
            sum += m_profile[i].m_prob[b] * other.m_profile[i].m_prob[b];
        prod *= sum;
    }
    return prod;
}

float DnaPSSM::log_dot_product(const DnaPSSM& other) const { return logf(dot_product(other)); }

void DnaPSSM::permut_randomize() {
    const int w = width();
    // A draw of exactly 1.0 would index one past the end: it takes the last column.
    auto pick = [w]() {
        const float u = static_cast<float>(Random::bits() / 4294967295.0);
        return std::min(static_cast<int>(u * static_cast<float>(w)), w - 1);
    };
    for (int k = 0; k < 2 * w; ++k) {
        const int i = pick();
        const int j = pick();
        std::swap(m_profile[i], m_profile[j]);
    }
}

std::string DnaPSSM::get_consensus() const {
    static const char kLetter[] = "ACGT";
    // Pair letters by the two base indexes (lower first).
    static const char kPair[4][4] = {
        {'A', 'M', 'R', 'W'}, {'M', 'C', 'S', 'Y'}, {'R', 'S', 'G', 'K'}, {'W', 'Y', 'K', 'T'}};
    const int single = static_cast<int>(roundf(CONSENSUS_SINGLE_THRESH * 4000.0f));
    const int pair = static_cast<int>(roundf(CONSENSUS_DOUBLE_THRESH * 4000.0f));
    std::string out;
    for (const DnaProbVec& col : m_profile) {
        // Probability in thousandths, times 4, plus the base index: sorting orders by probability and
        // by base index among equals, and the limits compare these packed values.
        int v[4];
        for (int b = 0; b < 4; ++b)
            v[b] = static_cast<int>(roundf(col.m_prob[b] * 1000.0f)) * 4 + b;
        std::sort(v, v + 4);
        const int top = v[3], second = v[2];
        if (top > single)
            out.push_back(kLetter[top & 3]);
        else if (top + second < pair)
            out.push_back('*');
        else
            out.push_back(kPair[top & 3][second & 3]);
    }
    return out;
}

void DnaPSSM::write_tab(std::ostream& os, int id) const {
    for (int i = 0; i < width(); ++i)
        os << id << '\t' << i << '\t' << m_profile[i];
}

std::ostream& operator<<(std::ostream& os, const DnaPSSM& pssm) {
    std::cerr << "[" << pssm.m_min_range << "," << pssm.m_max_range << "] dir=" << pssm.m_bidirect
              << std::endl;
    for (const DnaProbVec& col : pssm.m_profile)
        os << col;
    for (const DnaProbVec& col : pssm.m_profile)
        os << col.m_log[0] << '\t' << col.m_log[1] << '\t' << col.m_log[2] << '\t' << col.m_log[3] << '\n';
    return os;
}
