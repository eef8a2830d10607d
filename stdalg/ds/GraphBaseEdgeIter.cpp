// GraphBaseEdgeIter: restarting on another node.
#include "ds/GraphBaseEdgeIter.h"

GraphBaseEdgeIter::~GraphBaseEdgeIter() {}

void GraphBaseEdgeIter::restart(int node) {
    m_node = node;
    first();
}

void GraphBaseEdgeIter::restart(int node, Direction dir) {
    m_dir = dir;
    m_node = node;
    first();
}
