// The expression layer of the biclustering programs: the gene table and the expression key and cells.
#ifndef VESK_EXAMPLES_EXAMPLEEXPR_H
#define VESK_EXAMPLES_EXAMPLEEXPR_H

#include "ExampleIO.h"
#include "StateDataSetReal.h"
#include "VarUniverse.h"

// Reads Tables::GeneTab into the universe and Tables::ExpKey with Tables::ExpData into the data set;
// false (having said which) when a table can't be opened.
inline bool read_expression(options& opts, VarUniverse& universe, StateDataSetReal& data) {
    std::ifstream genes, key, cells;
    if (!open_in(genes, opts.get_str("Tables", "GeneTab", true)) ||
        !open_in(key, opts.get_str("Tables", "ExpKey", true)) ||
        !open_in(cells, opts.get_str("Tables", "ExpData", true)))
        return false;
    universe.read_short_tabs(genes);
    data.read(key, cells, 0.0f);
    return true;
}

#endif
