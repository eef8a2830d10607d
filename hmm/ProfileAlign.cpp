// Pair-HMM and profile alignment: parameter files, the direct pair HMM and the one-sequence profile.
#include "ProfileAlign.h"

#include "LogSpace.h"
#include "error.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <limits>
#include <string>

namespace {
// log(1 - exp(rest)), the log of zero when the other edges already hold all the mass.
float complement_log(float rest) {
    const float q = 1.0f - expf(rest);
    return rest < 0.0f && q > 0.0f ? logf(q) : kLogZero;
}
} // namespace

static constexpr char kSrc[] = "ProfileAlign";

static const float kLog2 = logf(2.0f);

// The log-sum of a list of log values.
static float lsum(std::initializer_list<float> v) {
    float t = kLogZero;
    for (float a : v)
        t = log_sum(t, a);
    return t;
}

static float lsum(const std::vector<float>& v) {
    float t = kLogZero;
    for (float a : v)
        t = log_sum(t, a);
    return t;
}

// Reads "<word> <value>" and checks the word.
static float read_tran_line(std::istream& is, const char* word, const char* article) {
    std::string w;
    float v = 0.0f;
    is >> w >> v;
    if (w != word)
        VESK_FATAL(kSrc, "Bad file format in tran table, should have "
                             << article << word << " line and found " << w << " instead");
    return v;
}

// One row per symbol: the row number, then the probabilities (exp of the stored logs, less `norm`).
static void write_subs(std::ostream& os, const std::vector<float>& subs, int n, bool row_norm) {
    os << std::setprecision(9);
    for (int i = 0; i < n; ++i) {
        const std::vector<float> row(subs.begin() + static_cast<std::ptrdiff_t>(i) * n,
                                     subs.begin() + static_cast<std::ptrdiff_t>(i + 1) * n);
        const float norm = row_norm ? lsum(row) : 0.0f;
        os << i;
        for (float v : row)
            os << '\t' << expf(v - norm);
        os << '\n';
    }
}

static void read_subs(std::istream& is, std::vector<float>& subs, int n) {
    for (int i = 0; i < n; ++i) {
        int r = -1;
        is >> r;
        if (r != i)
            VESK_FATAL(kSrc, "Bad file format when reading char subs tab, " << r << " vs " << i);
        for (int j = 0; j < n; ++j) {
            float p = 0.0f;
            is >> p;
            subs[static_cast<std::size_t>(i) * n + j] = log_prob(p);
        }
    }
}

static void print_vec(std::ostream& os, const char* head, const std::vector<float>& v) {
    os << head;
    for (float a : v)
        os << ' ' << a;
    os << '\n';
}

PairAlignParams::PairAlignParams(int num_symbols) : m_num_symbols(num_symbols) { clear(); }

void PairAlignParams::clear() {
    m_mm = m_mg = m_gg = m_gm = m_mf = m_gf = kLogZero;
    m_x_gap.assign(m_num_symbols, kLogZero);
    m_y_gap.assign(m_num_symbols, kLogZero);
    m_subs.assign(static_cast<std::size_t>(m_num_symbols) * m_num_symbols, kLogZero);
}

void PairAlignParams::normalize() {
    m_mg -= kLog2;
    float t = lsum({m_gg, m_gm, m_gf});
    std::cerr << "gap tot " << t << "\n";
    m_gg -= t;
    m_gm -= t;
    m_gf -= t;
    t = lsum({m_mm, m_mg, m_mf});
    std::cerr << "match tot " << t << "\n";
    m_mg -= kLog2 + t;
    m_mm -= t;
    m_mf -= t;
    std::vector<float> g(m_num_symbols);
    for (int i = 0; i < m_num_symbols; ++i)
        g[i] = log_sum(m_x_gap[i], m_y_gap[i]);
    const float gt = lsum(g);
    for (int i = 0; i < m_num_symbols; ++i)
        m_x_gap[i] = m_y_gap[i] = g[i] - gt;
    const float st = lsum(m_subs);
    for (float& v : m_subs)
        v -= st;
    for (int i = 0; i < m_num_symbols; ++i) {
        for (int j = i + 1; j < m_num_symbols; ++j) {
            const float v = log_sum(subs(i, j), subs(j, i)) - kLog2;
            subs(i, j) = v;
            subs(j, i) = v;
        }
    }
}

void PairAlignParams::print(std::ostream& os) const {
    os << "M-M " << m_mm << " M-G " << m_mg << " G-M " << m_gm << " G-G " << m_gg << " M-F " << m_mf
       << " G-F " << m_gf << '\n';
    print_vec(os, "X gaps:", m_x_gap);
    print_vec(os, "Y gaps:", m_y_gap);
    for (int i = 0; i < m_num_symbols; ++i) {
        os << i;
        for (int j = 0; j < m_num_symbols; ++j)
            os << ' ' << subs(i, j);
        os << '\n';
    }
}

void PairAlignParams::write(std::ostream& subs_os, std::ostream& tran) const {
    write_subs(subs_os, m_subs, m_num_symbols, false);
    tran << std::setprecision(9) << "M-M\t" << m_mm << "\nM-G\t" << m_mg << "\nG-M\t" << m_gm << "\nG-G\t"
         << m_gg << "\nM-F\t" << m_mf << "\nG-F\t" << m_gf << '\n';
}

void PairAlignParams::read(std::istream& subs_is, std::istream& tran) {
    m_mm = read_tran_line(tran, "M-M", "");
    m_mg = read_tran_line(tran, "M-G", "a ");
    m_gm = read_tran_line(tran, "G-M", "");
    m_gg = read_tran_line(tran, "G-G", "");
    m_mf = read_tran_line(tran, "M-F", "");
    m_gf = read_tran_line(tran, "G-F", "");
    read_subs(subs_is, m_subs, m_num_symbols);
}

ProfAlignParams::ProfAlignParams(int num_symbols)
    : m_num_symbols(num_symbols), m_bg(num_symbols, -logf(static_cast<float>(num_symbols))),
      m_subs(static_cast<std::size_t>(num_symbols) * num_symbols, kLogZero) {
    for (auto& row : m_tran)
        for (float& v : row)
            v = kLogZero;
}

int ProfAlignParams::src_row(int type) {
    switch (type) {
    case ProfileHMM::Start:
    case ProfileHMM::M:
        return 0;
    case ProfileHMM::I:
        return 1;
    case ProfileHMM::D:
        return 2;
    default:
        return -1;
    }
}

int ProfAlignParams::dst_row(int type) {
    return type == ProfileHMM::Fin ? 0 : type == ProfileHMM::Start ? -1 : src_row(type);
}

float ProfAlignParams::get_type_type_lp(int from, int to) const {
    const int r = src_row(from);
    const int c = dst_row(to);
    return r < 0 || c < 0 ? std::numeric_limits<float>::quiet_NaN() : m_tran[r][c];
}

float ProfAlignParams::add_type_type_lp(int from, int to, float value) {
    const int r = src_row(from);
    const int c = dst_row(to);
    if (r < 0 || c < 0)
        return std::numeric_limits<float>::quiet_NaN();
    m_tran[r][c] = log_sum(m_tran[r][c], value);
    return m_tran[r][c];
}

void ProfAlignParams::init_tran_gap(const SymbSubstMat& mat, float delta, float epsilon) {
    m_tran[0][0] = logf(1.0f - 2.0f * delta);
    m_tran[0][1] = m_tran[0][2] = logf(delta);
    m_tran[1][0] = logf(1.0f - delta - epsilon);
    m_tran[1][1] = logf(epsilon);
    m_tran[1][2] = logf(delta);
    m_tran[2][0] = logf(1.0f - delta - epsilon);
    m_tran[2][1] = logf(delta);
    m_tran[2][2] = logf(epsilon);
    for (int i = 0; i < m_num_symbols && i < mat.m_max_symbol; ++i)
        for (int j = 0; j < m_num_symbols && j < mat.m_max_symbol; ++j)
            m_subs[static_cast<std::size_t>(i) * m_num_symbols + j] = log_prob(mat.get(i, j));
}

void ProfAlignParams::normalize() {
    for (auto& row : m_tran) {
        const float t = lsum({row[0], row[1], row[2]});
        for (float& v : row)
            v -= t;
    }
    for (int i = 0; i < m_num_symbols; ++i) {
        float* row = &m_subs[static_cast<std::size_t>(i) * m_num_symbols];
        float t = kLogZero;
        for (int j = 0; j < m_num_symbols; ++j)
            t = log_sum(t, row[j]);
        for (int j = 0; j < m_num_symbols; ++j)
            row[j] -= t;
    }
}

void ProfAlignParams::print(std::ostream& os) const {
    static const char* const kName[] = {"M", "I", "D"};
    for (int r = 0; r < 3; ++r)
        os << kName[r] << ' ' << m_tran[r][0] << ' ' << m_tran[r][1] << ' ' << m_tran[r][2] << '\n';
    print_vec(os, "Background:", m_bg);
    for (int i = 0; i < m_num_symbols; ++i) {
        os << i;
        for (int j = 0; j < m_num_symbols; ++j)
            os << ' ' << subs(i, j);
        os << '\n';
    }
}

void ProfAlignParams::write(std::ostream& subs_os, std::ostream& tran) const {
    write_subs(subs_os, m_subs, m_num_symbols, true);
    static const char* const kName[] = {"M", "I", "D"};
    tran << std::setprecision(9);
    for (int r = 0; r < 3; ++r)
        tran << kName[r] << '\t' << m_tran[r][0] << '\t' << m_tran[r][1] << '\t' << m_tran[r][2] << '\n';
}

void ProfAlignParams::read(std::istream& subs_is, std::istream& tran) {
    static const char* const kName[] = {"M", "I", "D"};
    for (int r = 0; r < 3; ++r) {
        std::string w;
        tran >> w;
        if (w != kName[r])
            VESK_FATAL(kSrc, "Bad file format in tran table, should have " << kName[r] << " line and found "
                                                                           << w << " instead");
        tran >> m_tran[r][0] >> m_tran[r][1] >> m_tran[r][2];
    }
    read_subs(subs_is, m_subs, m_num_symbols);
}

float ProfileAlignDirect::direct_prof_align(const SymbolSequence& x, const SymbolSequence& y,
                                            PairAlignParams& in, PairAlignParams& out, bool no_update) {
    const int n = static_cast<int>(x.size());
    const int m = static_cast<int>(y.size());
    const int w = m + 1;
    m_w = w;
    const std::size_t cells = static_cast<std::size_t>(n + 1) * w;
    for (std::vector<float>* t : {&m_fm, &m_fx, &m_fy, &m_bm, &m_bx, &m_by})
        t->assign(cells, kLogZero);
    for (int i = 0; i < n; ++i)
        if (x.code_at(i) >= in.m_num_symbols)
            VESK_FATAL(kSrc, "Symbol " << x.code_at(i) << " of x outside " << in.m_num_symbols << " symbols");
    for (int j = 0; j < m; ++j)
        if (y.code_at(j) >= in.m_num_symbols)
            VESK_FATAL(kSrc, "Symbol " << y.code_at(j) << " of y outside " << in.m_num_symbols << " symbols");
    auto at = [w](int i, int j) { return static_cast<std::size_t>(i) * w + j; };
    auto xs = [&x](int i) { return x.code_at(i - 1); };
    auto ys = [&y](int j) { return y.code_at(j - 1); };

    m_fm[0] = 0.0f;
    for (int i = 0; i <= n; ++i) {
        for (int j = 0; j <= m; ++j) {
            const std::size_t c = at(i, j);
            if (i > 0 && j > 0) {
                const std::size_t d = at(i - 1, j - 1);
                m_fm[c] =
                    lsum({m_fm[d] + in.m_mm, m_fx[d] + in.m_gm, m_fy[d] + in.m_gm}) + in.subs(xs(i), ys(j));
            }
            if (i > 0) {
                const std::size_t u = at(i - 1, j);
                m_fx[c] = log_sum(m_fm[u] + in.m_mg, m_fx[u] + in.m_gg) + in.m_x_gap[xs(i)];
            }
            if (j > 0) {
                const std::size_t l = at(i, j - 1);
                m_fy[c] = log_sum(m_fm[l] + in.m_mg, m_fy[l] + in.m_gg) + in.m_y_gap[ys(j)];
            }
        }
    }
    const std::size_t last = at(n, m);
    const float total = lsum({m_fm[last] + in.m_mf, m_fx[last] + in.m_gf, m_fy[last] + in.m_gf});
    std::cerr << "fore tot p " << total << "\n";

    // Backward: the log probability of the rest of the path after being in a state at (i, j).
    for (int i = n; i >= 0; --i) {
        for (int j = m; j >= 0; --j) {
            const std::size_t c = at(i, j);
            float bm = kLogZero, bx = kLogZero, by = kLogZero;
            if (i == n && j == m) {
                bm = in.m_mf;
                bx = by = in.m_gf;
            }
            if (i < n && j < m) {
                const float t = in.subs(xs(i + 1), ys(j + 1)) + m_bm[at(i + 1, j + 1)];
                bm = log_sum(bm, in.m_mm + t);
                bx = log_sum(bx, in.m_gm + t);
                by = log_sum(by, in.m_gm + t);
            }
            if (i < n) {
                const float t = in.m_x_gap[xs(i + 1)] + m_bx[at(i + 1, j)];
                bm = log_sum(bm, in.m_mg + t);
                bx = log_sum(bx, in.m_gg + t);
            }
            if (j < m) {
                const float t = in.m_y_gap[ys(j + 1)] + m_by[at(i, j + 1)];
                bm = log_sum(bm, in.m_mg + t);
                by = log_sum(by, in.m_gg + t);
            }
            m_bm[c] = bm;
            m_bx[c] = bx;
            m_by[c] = by;
        }
    }
    m_back_total = m_bm[0];
    std::cerr << "back tot p " << m_back_total << "\n";
    if (no_update)
        return total;

    for (int i = 0; i <= n; ++i) {
        for (int j = 0; j <= m; ++j) {
            const std::size_t c = at(i, j);
            if (i < n && j < m) {
                const float t = in.subs(xs(i + 1), ys(j + 1)) + m_bm[at(i + 1, j + 1)] - total;
                out.m_mm = log_sum(out.m_mm, m_fm[c] + in.m_mm + t);
                out.m_gm = log_sum(out.m_gm, m_fx[c] + in.m_gm + t);
                out.m_gm = log_sum(out.m_gm, m_fy[c] + in.m_gm + t);
            }
            if (i < n) {
                const float t = in.m_x_gap[xs(i + 1)] + m_bx[at(i + 1, j)] - total;
                out.m_mg = log_sum(out.m_mg, m_fm[c] + in.m_mg + t);
                out.m_gg = log_sum(out.m_gg, m_fx[c] + in.m_gg + t);
            }
            if (j < m) {
                const float t = in.m_y_gap[ys(j + 1)] + m_by[at(i, j + 1)] - total;
                out.m_mg = log_sum(out.m_mg, m_fm[c] + in.m_mg + t);
                out.m_gg = log_sum(out.m_gg, m_fy[c] + in.m_gg + t);
            }
            if (i > 0 && j > 0) {
                float& s = out.subs(xs(i), ys(j));
                s = log_sum(s, m_fm[c] + m_bm[c] - total);
            }
            if (i > 0)
                out.m_x_gap[xs(i)] = log_sum(out.m_x_gap[xs(i)], m_fx[c] + m_bx[c] - total);
            if (j > 0)
                out.m_y_gap[ys(j)] = log_sum(out.m_y_gap[ys(j)], m_fy[c] + m_by[c] - total);
        }
    }
    out.m_mf = log_sum(out.m_mf, m_fm[last] + in.m_mf - total);
    out.m_gf = log_sum(out.m_gf, m_fx[last] + in.m_gf - total);
    out.m_gf = log_sum(out.m_gf, m_fy[last] + in.m_gf - total);
    return total;
}

ProfileAlign::ProfileAlign(int alphabet, const SymbolSequence& seq, ProfAlignParams& params)
    : m_seq(seq), m_prof(alphabet, static_cast<int>(seq.size())), m_forward(m_prof), m_backward(m_prof),
      m_viterbi(m_prof), m_params(params), m_counts(params.m_num_symbols), m_full_p(kLogZero) {
    const int n = static_cast<int>(seq.size());
    std::cerr << "seq length " << n << "\n";
    m_counts.m_bg.assign(params.m_num_symbols, kLogZero);
    if (n < 1)
        m_prof.update_length(0);
    for (int i = 0; i < n; ++i) {
        const int c = seq.code_at(i);
        if (c > 3)
            std::cerr << "ERROR bad char " << c << " at pos " << i << "\n";
        for (int b = 0; b < alphabet; ++b)
            m_prof.set_state_emission(
                m_prof.state_at(i + 1, ProfileHMM::M), b,
                c < params.m_num_symbols && b < params.m_num_symbols ? expf(params.subs(c, b)) : 0.0f);
    }
    for (int p = 0; p <= n; ++p)
        for (int b = 0; b < alphabet; ++b)
            m_prof.set_state_emission(m_prof.state_at(p, ProfileHMM::I), b,
                                      b < params.m_num_symbols ? expf(params.m_bg[b]) : 0.0f);
    const int fin = m_prof.m_finish_state;
    for (int k = 0; k < m_prof.num_states(); ++k) {
        float rest = kLogZero;
        for (const HMMAdjacency& a : m_prof.m_adj[k]) {
            if (a.to == fin)
                continue;
            const float lp = params.get_type_type_lp(m_prof.m_state_type[k], m_prof.m_state_type[a.to]);
            rest = log_sum(rest, lp);
        }
        for (HMMAdjacency& a : m_prof.m_adj[k]) {
            const int ft = m_prof.m_state_type[k];
            float lp = params.get_type_type_lp(ft, m_prof.m_state_type[a.to]);
            if (a.to == fin && ft != ProfileHMM::D)
                lp = complement_log(rest);
            a.set_adj_log_prob(lp);
            for (HMMAdjacency& b : m_prof.m_back_adj[a.to])
                if (b.from == k)
                    b.set_adj_log_prob(lp);
        }
    }
}

float ProfileAlign::align(const SymbolSequence& seq, bool update) {
    m_full_p = m_forward.decode(seq);
    const float b = m_backward.decode(seq);
    std::cerr << "EM full_p = " << m_full_p << " b full_p = " << b << "\n";
    if (update)
        update_gap_subs_params(seq);
    return m_full_p;
}

void ProfileAlign::update_gap_subs_params(const SymbolSequence& seq) {
    const int L = static_cast<int>(seq.size());
    const int n = m_params.m_num_symbols;
    for (int i = 0; i <= L; ++i) {
        for (int k = 0; k < m_prof.num_states(); ++k) {
            const float fk = m_forward.get_cell(i, k);
            for (const HMMAdjacency& a : m_prof.m_adj[k]) {
                const HMMState& to = m_prof.m_states[a.to];
                float t;
                if (to.m_silent) {
                    t = fk + a.log_p + m_backward.get_cell(i, a.to) - m_full_p;
                } else {
                    if (i == L)
                        continue;
                    t = fk + a.log_p + to.m_log_emit[seq.code_at(i)] + m_backward.get_cell(i + 1, a.to) -
                        m_full_p;
                }
                m_counts.add_type_type_lp(m_prof.m_state_type[k], m_prof.m_state_type[a.to], t);
            }
            const int type = m_prof.m_state_type[k];
            if (i > 0 && (type == ProfileHMM::M || type == ProfileHMM::I)) {
                const int x = seq.code_at(i - 1);
                if (x >= n)
                    continue;
                const float t = fk + m_backward.get_cell(i, k) - m_full_p;
                if (type == ProfileHMM::I) {
                    m_counts.m_bg[x] = log_sum(m_counts.m_bg[x], t);
                } else {
                    const int c = m_seq.code_at(m_prof.m_state_pos[k]);
                    if (c < n) {
                        float& s = m_counts.m_subs[static_cast<std::size_t>(c) * n + x];
                        s = log_sum(s, t);
                    }
                }
            }
        }
    }
}

float ProfileAlign::get_align_prob(int pos_x, int pos_y, int k) const {
    const int size = m_prof.m_length + 1;
    if (pos_x < 0 || pos_x + k >= size) {
        std::cerr << "called ProfileAlign::get_align_prob with " << pos_x << " k " << k << " size " << size
                  << "\n";
        return kLogZero;
    }
    return m_backward.get_cell(pos_y + k, m_prof.state_at(pos_x + k, ProfileHMM::M)) +
           m_forward.get_cell(pos_y, m_prof.state_at(pos_x, ProfileHMM::M)) - m_full_p;
}

void ProfileAlign::max_like_align(const SymbolSequence& seq, int start_x, int start_y, int len) {
    HMMPath path;
    m_viterbi.decode(seq, path);
    std::string rx, ry;
    int px = 0, py = 0;
    for (int s : path) {
        const int type = m_prof.m_state_type[s];
        if (type == ProfileHMM::Start)
            continue;
        const bool in_x = type == ProfileHMM::M || type == ProfileHMM::D;
        const bool in_y = type == ProfileHMM::M || type == ProfileHMM::I;
        char cx = in_x ? m_seq.decode_char(m_seq[px]) : '-';
        char cy = in_y ? seq.decode_char(seq[py]) : '-';
        if (type == ProfileHMM::M &&
            !(px >= start_x && px < start_x + len && py >= start_y && py < start_y + len))
            cx = cy = ' ';
        rx.push_back(cx);
        ry.push_back(cy);
        px += in_x ? 1 : 0;
        py += in_y ? 1 : 0;
    }
    for (const std::string* r : {&rx, &ry}) {
        for (std::size_t c = 0; c < r->size(); ++c)
            std::cout << (c ? "\t" : "") << (*r)[c];
        std::cout << '\n';
    }
    std::cout << "\n\n";
}
