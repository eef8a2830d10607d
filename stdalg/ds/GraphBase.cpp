// GraphBase: the option form of a graph (an int array of edge lines).
#include "ds/GraphBase.h"

#include "error.h"
#include "options.h"

#include <memory>

static constexpr char kSrc[] = "ds/GraphBase";

GraphBase::~GraphBase() {}

void GraphBase::read_option(options& opt, const std::string& scope) {
    std::vector<int>* edges = opt.get_ints(scope, "Edges", true);
    const int line = opt.get_int(scope, "LineSize", true);
    if (line != line_size())
        VESK_FATAL(kSrc, "Number of entries ine dges array is " << line << " instead of " << line_size());
    // A trailing partial line is ignored.
    const std::size_t step = static_cast<std::size_t>(line);
    for (std::size_t i = 0; i + step <= edges->size(); i += step)
        insert_edge((*edges)[i + 1], (*edges)[i + 2], (*edges)[i]);
}

void GraphBase::write_option(std::ostream&, std::vector<int>& lines) const {
    const std::size_t step = static_cast<std::size_t>(line_size());
    std::size_t at = 0;
    std::unique_ptr<GraphBaseNodeIter> nodes(new_node_iter());
    for (; !nodes->at_end(); ++*nodes) {
        std::unique_ptr<GraphBaseEdgeIter> edges(new_edge_iter(nodes->node(), GraphBaseEdgeIter::Out));
        for (; !edges->at_end(); ++*edges) {
            lines[at] = edges->edge();
            lines[at + 1] = nodes->node();
            lines[at + 2] = edges->other();
            at += step;
        }
    }
}

std::ostream& operator<<(std::ostream& out, const GraphBase& g) {
    std::vector<int> lines(static_cast<std::size_t>(g.line_size()) * static_cast<std::size_t>(g.edges_num()));
    g.write_option(out, lines);
    return out;
}
