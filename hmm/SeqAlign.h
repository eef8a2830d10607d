// Substitution matrices, pairwise alignments by integer dynamic programming, and star multiple alignments.
#ifndef VESK_HMM_SEQALIGN_H
#define VESK_HMM_SEQALIGN_H

#include "SymbolSequence.h"
#include "options.h"

#include <istream>
#include <list>
#include <string>
#include <utility>
#include <vector>

// A square matrix over symbol codes, row-major, m_max_symbol entries a row.
class SymbSubstMat {
public:
    explicit SymbSubstMat(int max_symbol = 0) : m_max_symbol(max_symbol) {}
    // Reads "Matrix" (float list, row by row) and "MaxSymbolID" (row length) in `scope`.
    SymbSubstMat(options& opts, const std::string& scope);

    // Replaces the matrix with the floats of `is` up to the first that does not parse; every row of
    // m_max_symbol values must sum to 1 (within 0.001).
    void read(std::istream& is);
    float get(int x, int y) const { return m_matrix[static_cast<std::size_t>(x) * m_max_symbol + y]; }

    std::vector<float> m_matrix;
    int m_max_symbol;
};

// A pairwise alignment: (x position, y position) pairs from start to end, -1 for a gap.
class SeqAlignment : public std::list<std::pair<int, int>> {};

// Global alignment with a linear gap and the matrix entries truncated to int.
class DynProgAlign {
public:
    enum Direction { Diag = 0, Left = 1, Up = 2, Null = 3 };

    DynProgAlign(const SymbSubstMat& mat, int gap) : m_mat(mat), m_gap(gap) {}

    // Fills `out` (cleared first) with the best alignment of x against y; returns its score.
    // Ties go to the diagonal when it is at least both gaps, and to the step from above when the
    // two gaps are equal.
    int align(const SymbolSequence& x, const SymbolSequence& y, SeqAlignment& out);

    const SymbSubstMat& m_mat;
    int m_gap;
    std::vector<int> m_score;
    std::vector<Direction> m_dir;
};

// Not a full multiple-alignment class: the columns of an alignment of several sequences, each a
// vector of positions (one slot per row, -1 for a gap), and the sequence id of each row. The first
// row is the focus (the centre of a star alignment).
class SeqMultiAlign {
public:
    // Empties the alignment.
    void reset();
    // Adds sequence `id` as a new row: into an empty alignment as one column per position, beside
    // existing rows as a row of gaps.
    void add_seq(const SymbolSequence& seq, int id);
    // Adds sequence `id` as a new row from its pairwise alignment against the focus row: columns
    // where the focus has a gap in `al` are inserted; a focus position that does not match the
    // next focus slot is fatal.
    void add_by_pair(int id, const SeqAlignment& al);
    // `cols` columns by `rows` rows, all slots -1, row ids -1.
    void reset_align(int cols, int rows);
    void set_seq_id(int row, int id) { m_seq_ids[row] = id; }
    void set_seq_pos(int row, int col, int pos) { m_cols[col][row] = pos; }

    int num_cols() const { return static_cast<int>(m_cols.size()); }
    int num_rows() const { return static_cast<int>(m_seq_ids.size()); }
    int slot(int row, int col) const { return m_cols[col][row]; }
    int seq_id(int row) const { return m_seq_ids[row]; }
    // The row as letters through the sequence's decode_char, '-' for gaps.
    std::string row_text(int row, const SymbolSequence& seq) const;

    std::vector<std::vector<int>> m_cols;
    std::vector<int> m_seq_ids;
};

// Star alignment: every sequence aligned to a centre by DynProgAlign and merged into one alignment.
class StarMultiAlign {
public:
    StarMultiAlign(const SymbSubstMat& mat, int gap) : m_aligner(mat, gap) {}
    void align(const SymbolSequenceSet& seqs, int centre, SeqMultiAlign& msa);

    DynProgAlign m_aligner;
};

#endif
