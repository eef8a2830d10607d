// Matrix<T>: a dense row-major matrix that keeps its cells in place when it grows or shrinks.
#ifndef VESK_MODEL_MATRIX_H
#define VESK_MODEL_MATRIX_H

#include <algorithm>
#include <vector>

template <class T> class Matrix {
public:
    Matrix() {}
    Matrix(int rows, int cols, T fill)
        : m_vals(static_cast<size_t>(rows) * cols, fill), m_cols(cols), m_rows(rows) {}

    int rows() const { return m_rows; }
    int cols() const { return m_cols; }

    T& operator()(int r, int c) { return m_vals[static_cast<size_t>(r) * m_cols + c]; }
    const T& operator()(int r, int c) const { return m_vals[static_cast<size_t>(r) * m_cols + c]; }
    T* operator[](int r) { return m_vals.data() + static_cast<size_t>(r) * m_cols; }
    const T* operator[](int r) const { return m_vals.data() + static_cast<size_t>(r) * m_cols; }

    // New shape; a cell inside both shapes keeps its (row, column), new cells get `fill`.
    void resize(int rows, int cols, T fill) {
        if (cols == m_cols) {
            m_vals.resize(static_cast<size_t>(rows) * cols, fill);
        } else {
            std::vector<T> vals(static_cast<size_t>(rows) * cols, fill);
            const int keep_rows = std::min(rows, m_rows);
            const int keep_cols = std::min(cols, m_cols);
            for (int r = 0; r < keep_rows; ++r)
                std::copy(m_vals.begin() + static_cast<size_t>(r) * m_cols,
                          m_vals.begin() + static_cast<size_t>(r) * m_cols + keep_cols,
                          vals.begin() + static_cast<size_t>(r) * cols);
            m_vals.swap(vals);
            m_cols = cols;
        }
        m_rows = rows;
    }
    // Changes only the number of rows.
    void resize_rows(int rows, T fill) { resize(rows, m_cols, fill); }
    void set_all(T val) { std::fill(m_vals.begin(), m_vals.end(), val); }

    std::vector<T> m_vals;
    int m_cols = 0;
    int m_rows = 0;
};

#endif
