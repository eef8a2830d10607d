// The two-axis web that carries every graph, and the print form of a root.
#include "ds/Web.tcc"

std::ostream& operator<<(std::ostream& out, const RootNode& r) {
    return out << "head : " << r.m_head << " tail : " << r.m_tail << " how_many : " << r.m_how_many;
}

template class Web<2>;
