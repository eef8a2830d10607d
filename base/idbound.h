// Ceilings on the ids and counts that readers take from input files.
#ifndef VESK_BASE_IDBOUND_H
#define VESK_BASE_IDBOUND_H

// An id read from a file sizes a table with one entry per id (genes, classes, sets, experiments,
// series, biclusters, graph nodes and edges): it must lie in 0 ... kMaxInputId - 1, so that the
// table stays within a few hundred MiB and `id + 1` cannot overflow an int.
constexpr long long kMaxInputId = 1LL << 22;

// A table sized by two counts from a file (experiments by variables, classes by variables) holds at
// most this many cells.
constexpr long long kMaxInputCells = 1LL << 27;

// Whether `id` is a usable id for a table of at most `limit` entries.
inline bool input_id_ok(long long id, long long limit = kMaxInputId) { return id >= 0 && id < limit; }

// The largest id of one axis of a two-dimensional table whose other axis has `width` entries.
inline long long input_id_limit(long long width) {
    const long long by_cells = kMaxInputCells / (width > 1 ? width : 1);
    return by_cells < kMaxInputId ? by_cells : kMaxInputId;
}

#endif
