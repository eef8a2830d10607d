// GraphBase: the option form of a graph (an int array of edge lines).
#include "ds/GraphBase.h"

#include "error.h"
#include "idbound.h"
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
    // The store takes ids as given, so they are checked here: node ids name slots of the node lists,
    // an edge id names a free cell (or is -1, which asks for a new one).
    const std::size_t n = edges ? edges->size() : 0;
    for (std::size_t i = 0; i + step <= n; i += step) {
        const int id = (*edges)[i], src = (*edges)[i + 1], dst = (*edges)[i + 2];
        const std::size_t edge_no = i / step + 1;
        if (!input_id_ok(src) || !input_id_ok(dst))
            VESK_FATAL(kSrc, "Bad node id " << (input_id_ok(src) ? dst : src) << " in edge " << edge_no);
        if (id != -1 && (!input_id_ok(id) || edge_use(id)))
            VESK_FATAL(kSrc, "Bad edge id " << id << " in edge " << edge_no);
        insert_edge(src, dst, id);
    }
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
