// HeapBase: id table, minimum extraction through the concrete heap, table checks.
#include "ds/HeapBase.h"

#include <iostream>

void HeapBase::Node::printon(std::ostream& out) const {
    out << " node " << m_id << " {" << std::endl;
    print(out);
    out << " }" << std::endl;
}

void HeapBase::Node::print(std::ostream& out) const { out << "  Value: " << m_value << std::endl; }

void HeapBase::reset(int) {
    m_table.clear();
    m_min = nullptr;
}

bool HeapBase::is_used(int id) const {
    if (id < 0 || id >= static_cast<int>(m_table.size()))
        return false;
    return m_table[id] != nullptr;
}

template <class T> int HeapBase::extract_into(T& x) {
    if (!m_min)
        find_min();
    if (!m_min)
        return -1;
    const int id = m_min->m_id;
    x = static_cast<T>(m_min->m_value);
    remove_min();
    return id;
}

int HeapBase::extract_min() {
    double unused = 0.0;
    return extract_into(unused);
}
int HeapBase::extract_min(int& x) { return extract_into(x); }
int HeapBase::extract_min(float& x) { return extract_into(x); }
int HeapBase::extract_min(double& x) { return extract_into(x); }

void HeapBase::base_connect(Node* n) {
    if (!m_has_table)
        return;
    if (n->m_id >= static_cast<int>(m_table.size()))
        m_table.resize(n->m_id + 1, nullptr);
    m_table[n->m_id] = n;
}

void HeapBase::swap(Node* a, Node* b) {
    if (!m_has_table)
        return;
    m_table[a->m_id] = a;
    m_table[b->m_id] = b;
}

void HeapBase::disconnect(Node* n) {
    if (m_has_table)
        m_table[n->m_id] = nullptr;
    delete n;
}

// A heap without structure of its own: dropping the minimum is all there is to do.
void HeapBase::remove_min() {
    disconnect(m_min);
    m_min = nullptr;
}

void HeapBase::clear() { m_seen.assign(m_table.size(), false); }

bool HeapBase::base_verify_node(Node* n) {
    if (!m_has_table) {
        std::cerr << "no table\n";
        return true;
    }
    if (m_seen[n->m_id]) {
        std::cerr << "node " << n->m_id << " appears twice" << std::endl;
        return false;
    }
    m_seen[n->m_id] = true;
    return true;
}

bool HeapBase::verify() {
    if (!m_has_table)
        return true;
    for (std::size_t i = 0; i < m_table.size(); ++i) {
        const bool present = m_table[i] != nullptr;
        const bool seen = i < m_seen.size() && m_seen[i];
        if (present != seen) {
            std::cerr << "entry " << i << " in table has disappeared" << std::endl;
            return false;
        }
        if (present && m_table[i]->m_id != static_cast<int>(i)) {
            std::cerr << "entry " << i << " in table is corrupted" << std::endl;
            return false;
        }
    }
    return true;
}

void HeapBase::print(std::ostream& out) const { out << " Min: " << (m_min ? m_min->m_id : -1) << std::endl; }

void HeapBase::no_table() {
    m_has_table = false;
    m_table.clear();
}
