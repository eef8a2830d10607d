// Ceilings on the ids and counts that readers take from input files.
#ifndef VESK_BASE_IDBOUND_H
#define VESK_BASE_IDBOUND_H

// An id read from a file sizes a table with one entry per id (genes, classes, sets, experiments,
// series, biclusters, graph nodes and edges): it must lie in 0 ... input_id_ceiling() - 1 (2^22),
// so that the table stays within a few hundred MiB and `id + 1` cannot overflow an int.
long long input_id_ceiling();

// A table sized by two counts from a file (experiments by variables, classes by variables) holds at
// most input_cell_ceiling() cells (2^27).
long long input_cell_ceiling();

// Whether `id` is a usable id for a table of at most `limit` entries.
inline bool input_id_ok(long long id, long long limit) { return id >= 0 && id < limit; }
inline bool input_id_ok(long long id) { return input_id_ok(id, input_id_ceiling()); }

// The id ceiling of one axis of a two-dimensional table whose other axis has `width` entries.
inline long long input_id_limit(long long width) {
    const long long by_cells = input_cell_ceiling() / (width > 1 ? width : 1);
    return by_cells < input_id_ceiling() ? by_cells : input_id_ceiling();
}

#endif
