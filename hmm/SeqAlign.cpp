// Substitution matrices, integer dynamic-programming alignment and star multiple alignments.
#include "SeqAlign.h"

#include "error.h"

#include <cmath>
#include <iostream>

static constexpr char kSrc[] = "SeqAlign";

SymbSubstMat::SymbSubstMat(options& opts, const std::string& scope)
    : m_max_symbol(opts.get_int(scope, "MaxSymbolID", true)) {
    const std::vector<float>* v = opts.get_floats(scope, "Matrix", true);
    const std::size_t want = static_cast<std::size_t>(m_max_symbol) * m_max_symbol;
    if (m_max_symbol < 1 || v->size() != want)
        VESK_FATAL(kSrc, "Matrix of " << v->size() << " values for MaxSymbolID " << m_max_symbol);
    m_matrix = *v;
}

void SymbSubstMat::read(std::istream& is) {
    std::cerr << "init symb mat, max_sybm " << m_max_symbol << "\n";
    m_matrix.clear();
    float v;
    float sum = 0.0f;
    while (m_max_symbol > 0 && is >> v) {
        m_matrix.push_back(v);
        sum += v;
        if (m_matrix.size() % m_max_symbol == 0) {
            if (std::fabs(sum - 1.0f) > 0.001f)
                VESK_FATAL(kSrc, "bad sum " << sum << " at symb " << m_matrix.size() / m_max_symbol - 1);
            sum = 0.0f;
        }
    }
}

int DynProgAlign::align(const SymbolSequence& x, const SymbolSequence& y, SeqAlignment& out) {
    const int n = static_cast<int>(x.size());
    const int m = static_cast<int>(y.size());
    const int w = m + 1;
    m_score.assign(static_cast<std::size_t>(n + 1) * w, 0);
    m_dir.assign(m_score.size(), Null);
    for (int c : {0, 1})
        for (int i = 0; i < (c ? m : n); ++i)
            if ((c ? y.code_at(i) : x.code_at(i)) >= m_mat.m_max_symbol)
                VESK_FATAL(kSrc, "Symbol " << (c ? y.code_at(i) : x.code_at(i)) << " outside the matrix of "
                                           << m_mat.m_max_symbol);
    for (int j = 1; j <= m; ++j) {
        m_score[j] = m_score[j - 1] + m_gap;
        m_dir[j] = Left;
    }
    for (int i = 1; i <= n; ++i) {
        int* row = &m_score[static_cast<std::size_t>(i) * w];
        const int* up = row - w;
        Direction* dir = &m_dir[static_cast<std::size_t>(i) * w];
        row[0] = i * m_gap;
        dir[0] = Up;
        const float* mrow = &m_mat.m_matrix[static_cast<std::size_t>(x.code_at(i - 1)) * m_mat.m_max_symbol];
        for (int j = 1; j <= m; ++j) {
            const int diag = up[j - 1] + static_cast<int>(mrow[y.code_at(j - 1)]);
            const int left = row[j - 1] + m_gap;
            const int upv = up[j] + m_gap;
            if (diag >= left && diag >= upv) {
                row[j] = diag;
                dir[j] = Diag;
            } else if (upv < left) {
                row[j] = left;
                dir[j] = Left;
            } else {
                row[j] = upv;
                dir[j] = Up;
            }
        }
    }
    out.clear();
    int i = n, j = m;
    while (i > 0 || j > 0) {
        switch (m_dir[static_cast<std::size_t>(i) * w + j]) {
        case Diag:
            out.emplace_front(--i, --j);
            break;
        case Left:
            out.emplace_front(-1, --j);
            break;
        case Up:
            out.emplace_front(--i, -1);
            break;
        default:
            VESK_FATAL(kSrc, "PairAl TraceBack on null");
        }
    }
    return m_score[static_cast<std::size_t>(n) * w + m];
}

void SeqMultiAlign::reset() {
    m_cols.clear();
    m_seq_ids.clear();
}

void SeqMultiAlign::add_seq(const SymbolSequence& seq, int id) {
    if (m_seq_ids.empty()) {
        m_cols.assign(seq.size(), std::vector<int>());
        for (std::size_t c = 0; c < m_cols.size(); ++c)
            m_cols[c].push_back(static_cast<int>(c));
    } else {
        for (std::vector<int>& col : m_cols)
            col.push_back(-1);
    }
    m_seq_ids.push_back(id);
}

void SeqMultiAlign::add_by_pair(int id, const SeqAlignment& al) {
    const std::size_t rows = m_seq_ids.size();
    for (std::vector<int>& col : m_cols)
        col.push_back(-1);
    std::size_t c = 0;
    for (const std::pair<int, int>& pr : al) {
        if (pr.first < 0) {
            std::vector<int> col(rows + 1, -1);
            col[rows] = pr.second;
            m_cols.insert(m_cols.begin() + static_cast<std::ptrdiff_t>(c), col);
            ++c;
            continue;
        }
        while (c < m_cols.size() && m_cols[c][0] < 0)
            ++c;
        const int focus = c < m_cols.size() ? m_cols[c][0] : -1;
        if (focus != pr.first)
            VESK_FATAL(kSrc, "Focus slot val should match but " << focus << " != " << pr.first);
        m_cols[c][rows] = pr.second;
        ++c;
    }
    m_seq_ids.push_back(id);
}

void SeqMultiAlign::reset_align(int cols, int rows) {
    m_cols.assign(cols, std::vector<int>(rows, -1));
    m_seq_ids.assign(rows, -1);
}

std::string SeqMultiAlign::row_text(int row, const SymbolSequence& seq) const {
    std::string s;
    for (const std::vector<int>& col : m_cols)
        s.push_back(col[row] < 0 ? '-' : seq.decode_char(seq[col[row]]));
    return s;
}

void StarMultiAlign::align(const SymbolSequenceSet& seqs, int centre, SeqMultiAlign& msa) {
    msa.add_seq(seqs[centre], centre);
    SeqAlignment al;
    for (int i = 0; i < static_cast<int>(seqs.size()); ++i) {
        if (i == centre)
            continue;
        m_aligner.align(seqs[centre], seqs[i], al);
        msa.add_by_pair(i, al);
    }
}
