// Net: nodes, edges with stable indices, change events, topological order and Markov blankets.
#include "Net.h"

#include "error.h"

#include <algorithm>
#include <iostream>
#include <iterator>

static constexpr char kSrc[] = "Net";

Net::Net() : m_dispatch_on(true), m_next_event(0), m_last_from(-1), m_last_to(-1) {}

Net::~Net() = default;

int Net::add_rand_var(int vid, int card) {
    const int rvid = static_cast<int>(m_rvid_to_vid.size());
    m_rvid_to_vid.resize(rvid + 1);
    m_parents.resize(rvid + 1);
    m_children.resize(rvid + 1);
    m_card.push_back(card);
    m_parent_added_event.push_back(m_next_event++);
    m_child_added_event.push_back(m_next_event++);
    m_parent_removed_event.push_back(m_next_event++);
    m_child_removed_event.push_back(m_next_event++);
    if (vid >= static_cast<int>(m_vid_to_rvid.size()))
        m_vid_to_rvid.resize(vid + 1, 0);
    m_vid_to_rvid[vid] = rvid;
    m_rvid_to_vid[rvid] = vid;
    return rvid;
}

int Net::get_rvid(int vid) const {
    if (vid < 0 || vid >= static_cast<int>(m_vid_to_rvid.size()))
        return -1;
    return m_vid_to_rvid[vid];
}

int Net::get_edge_index(int from, int to) const {
    auto it = m_edge_index.find(std::make_pair(from, to));
    return it == m_edge_index.end() ? -1 : it->second;
}

void Net::insert_edge(int from, int to, int /*pos*/) {
    m_children[from].push_back(to);
    m_parents[to].push_back(from);
    m_edge_child_pos.push_back(std::prev(m_children[from].end()));
    m_edge_parent_pos.push_back(std::prev(m_parents[to].end()));
    m_edge_index[std::make_pair(from, to)] = static_cast<int>(m_edge_child_pos.size()) - 1;
    if (m_dispatch_on) {
        m_last_from = from;
        m_last_to = to;
        m_dispatch.invoke(m_parent_added_event[to]);
        m_dispatch.invoke(m_child_added_event[from]);
    }
}

void Net::erase_edge(int from, int to, int edge_index) {
    m_children[from].erase(m_edge_child_pos[edge_index]);
    m_parents[to].erase(m_edge_parent_pos[edge_index]);
    m_edge_index.erase(std::make_pair(from, to));
    if (m_dispatch_on) {
        m_last_from = from;
        m_last_to = to;
        m_dispatch.invoke(m_parent_removed_event[to]);
        m_dispatch.invoke(m_child_removed_event[from]);
    }
}

void Net::remove_edge(int edge_index) {
    // The entry in the tail's child list holds the head, the one in the head's parent list the tail.
    const int to = *m_edge_child_pos[edge_index];
    const int from = *m_edge_parent_pos[edge_index];
    erase_edge(from, to, edge_index);
}

void Net::remove_edge(int from, int to) {
    auto it = m_edge_index.find(std::make_pair(from, to));
    if (it == m_edge_index.end())
        VESK_FATAL(kSrc, "Tried to remove non existing edge\n");
    erase_edge(from, to, it->second);
}

void Net::topo_order_dive(int n, std::vector<int>& visited, std::list<int>& out) const {
    for (int p : m_parents[n])
        if (!visited[p])
            topo_order_dive(p, visited, out);
    visited[n] = 1;
    out.push_back(n);
}

void Net::compute_topo_order(std::list<int>& out) const {
    out.clear();
    const int n = get_nodes_num();
    std::vector<int> visited(n, 0);
    for (int v = 0; v < n; ++v)
        if (!visited[v])
            topo_order_dive(v, visited, out);
    std::cerr << "out order:";
    for (int v : out)
        std::cerr << " " << v;
    std::cerr << std::endl;
    if (static_cast<int>(out.size()) != n)
        VESK_FATAL(kSrc, "Topo order length does not equal number of nodes " << out.size() << " " << n);
}

void Net::compute_markov_blankets(std::vector<std::list<int>>& out) const {
    const int n = get_nodes_num();
    std::vector<char> mark(n, 0);
    for (int v = 0; v < n; ++v) {
        std::fill(mark.begin(), mark.end(), 0);
        for (int p : m_parents[v])
            mark[p] = 1;
        for (int c : m_children[v]) {
            mark[c] = 1;
            for (int p : m_parents[c])
                mark[p] = 1;
        }
        mark[v] = 0;
        std::list<int> blanket;
        for (int i = 0; i < n; ++i)
            if (mark[i])
                blanket.push_back(i);
        std::cerr << "BN blanket of " << v << " size is " << blanket.size() << std::endl;
        for (int i : blanket)
            std::cerr << " " << i;
        std::cerr << std::endl;
        out.push_back(std::move(blanket));
    }
}

bool Net::verify() const {
    const int n = get_nodes_num();
    if (static_cast<int>(m_parents.size()) != n || static_cast<int>(m_children.size()) != n ||
        static_cast<int>(m_card.size()) != n || static_cast<int>(m_parent_added_event.size()) != n) {
        std::cerr << "Net::verify: per-node vectors differ from the node count " << n << std::endl;
        return false;
    }
    std::size_t parent_entries = 0, child_entries = 0;
    for (int v = 0; v < n; ++v) {
        parent_entries += m_parents[v].size();
        child_entries += m_children[v].size();
    }
    if (parent_entries != m_edge_index.size() || child_entries != m_edge_index.size()) {
        std::cerr << "Net::verify: " << m_edge_index.size() << " edges but " << parent_entries
                  << " parent and " << child_entries << " child entries" << std::endl;
        return false;
    }
    for (const auto& e : m_edge_index) {
        const int from = e.first.first, to = e.first.second, i = e.second;
        if (*m_edge_child_pos[i] != to || *m_edge_parent_pos[i] != from) {
            std::cerr << "Net::verify: edge " << i << " (" << from << ", " << to << ") has stale positions"
                      << std::endl;
            return false;
        }
    }
    return true;
}

void Net::add_all_nodes(std::istream& is) {
    int count = 0;
    while (true) {
        int unused = 0, vid = 0, card = 0;
        if (!(is >> unused >> vid >> card))
            break;
        add_rand_var(vid, card);
        ++count;
    }
    std::cerr << "read " << count << " nodes " << std::endl;
}
