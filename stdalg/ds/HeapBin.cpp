// HeapBin: binomial heap operations, tie rules, and the structure check.
#include "ds/HeapBin.h"

#include <iostream>
#include <utility>

HeapBin::HeapBin(const HeapBin& src) : HeapBase(true), m_roots(nullptr) { copy_from(src.m_roots); }

HeapBin& HeapBin::operator=(const HeapBin& src) {
    if (this == &src)
        return *this;
    reset(0);
    copy_from(src.m_roots);
    return *this;
}

HeapBin::HeapBin(HeapBin&& src) noexcept : HeapBase(src.m_has_table), m_roots(src.m_roots) {
    m_table = std::move(src.m_table);
    m_min = src.m_min;
    src.m_table.clear();
    src.m_roots = nullptr;
    src.m_min = nullptr;
}

HeapBin& HeapBin::operator=(HeapBin&& src) noexcept {
    if (this == &src)
        return *this;
    release_all();
    m_has_table = src.m_has_table;
    m_table = std::move(src.m_table);
    m_min = src.m_min;
    m_roots = src.m_roots;
    src.m_table.clear();
    src.m_roots = nullptr;
    src.m_min = nullptr;
    return *this;
}

HeapBin::~HeapBin() { release_all(); }

void HeapBin::release_all() {
    delete m_roots;
    m_roots = nullptr;
    m_min = nullptr;
    m_table.clear();
}

void HeapBin::copy_from(const Node* n) {
    for (; n; n = n->m_sibling) {
        insert(n->m_id, n->m_value);
        copy_from(n->m_child);
    }
}

void HeapBin::reset(int n) {
    delete m_roots;
    m_roots = nullptr;
    HeapBase::reset(n);
}

void HeapBin::insert(int id, double key) {
    Node* n = new Node;
    n->m_id = id;
    n->m_value = key;
    connect(n);
}

void HeapBin::connect(Node* n) {
    if (m_min) {
        if (m_min->m_value >= n->m_value)
            m_min = n;
    } else if (!m_roots) {
        m_min = n;
    }
    combine(n);
    base_connect(n);
}

// Ascending degree; on equal degrees the node from `b` comes first.
HeapBin::Node* HeapBin::merge(Node* a, Node* b) {
    Node* first = nullptr;
    Node** tail = &first;
    while (a && b) {
        if (b->m_degree <= a->m_degree) {
            *tail = b;
            b = b->m_sibling;
        } else {
            *tail = a;
            a = a->m_sibling;
        }
        tail = &(*tail)->m_sibling;
    }
    *tail = a ? a : b;
    return first;
}

void HeapBin::combine(Node* list) {
    m_roots = merge(m_roots, list);
    Node* prev = nullptr;
    Node* cur = m_roots;
    if (!cur)
        return;
    Node* next = cur->m_sibling;
    while (next) {
        // Of three trees of one degree the first stays and the next two link.
        if (cur->m_degree == next->m_degree &&
            !(next->m_sibling && next->m_sibling->m_degree == cur->m_degree)) {
            if (next->m_value > cur->m_value) {
                cur->m_sibling = next->m_sibling;
                attach(next, cur);
            } else {
                // A tie goes to the later tree.
                if (prev)
                    prev->m_sibling = next;
                else
                    m_roots = next;
                if (m_min == cur)
                    m_min = next;
                attach(cur, next);
                cur = next;
            }
        } else {
            prev = cur;
            cur = next;
        }
        next = cur->m_sibling;
    }
}

void HeapBin::attach(Node* child, Node* parent) {
    child->m_parent = parent;
    child->m_sibling = parent->m_child;
    parent->m_child = child;
    ++parent->m_degree;
}

void HeapBin::find_min() {
    Node* best = m_roots;
    if (best) {
        for (Node* r = best->m_sibling; r; r = r->m_sibling)
            if (best->m_value >= r->m_value)
                best = r;
    }
    m_min = best;
}

void HeapBin::remove_min() {
    Node* n = static_cast<Node*>(m_min);
    // Unlink from the root list.
    if (m_roots == n) {
        m_roots = n->m_sibling;
    } else {
        Node* p = m_roots;
        while (p->m_sibling != n)
            p = p->m_sibling;
        p->m_sibling = n->m_sibling;
    }
    // Children come in descending degree; reversed they form a root list.
    Node* rev = nullptr;
    for (Node* c = n->m_child; c;) {
        Node* following = c->m_sibling;
        c->m_parent = nullptr;
        c->m_sibling = rev;
        rev = c;
        c = following;
    }
    combine(rev);
    n->m_degree = 0;
    n->m_child = nullptr;
    n->m_sibling = nullptr;
    disconnect(n);
    m_min = nullptr;
}

void HeapBin::promote(Node* n) {
    Node* p = n->m_parent;
    std::swap(n->m_id, p->m_id);
    std::swap(n->m_value, p->m_value);
    swap(n, p);
}

double HeapBin::change(int id, double key) {
    Node* n = static_cast<Node*>(m_table[id]);
    const double old = n->m_value;
    if (key - old == 0)
        return old;
    n->m_value = key;
    if (key > old) {
        if (n == m_min)
            m_min = nullptr;
        // Sift down: the smallest child (the last one on ties) comes up while it isn't above the key.
        while (n->m_child) {
            Node* best = n->m_child;
            for (Node* c = best->m_sibling; c; c = c->m_sibling)
                if (best->m_value >= c->m_value)
                    best = c;
            if (best->m_value > key)
                break;
            promote(best);
            n = best;
        }
    } else {
        while (n->m_parent && n->m_parent->m_value > key) {
            promote(n);
            n = n->m_parent;
        }
        if (m_min && m_min->m_value > n->m_value)
            m_min = n;
    }
    return old;
}

double HeapBin::remove(int id) {
    if (!m_min)
        find_min();
    Node* n = static_cast<Node*>(m_table[id]);
    const double key = n->m_value;
    if (n != m_min) {
        // A key strictly below the minimum, with no infinity needed.
        const double m = m_min->m_value;
        double forged;
        if (m < -1)
            forged = 2 * m;
        else if (m > 1)
            forged = m / 2;
        else
            forged = m - 2;
        change(id, forged);
    }
    extract_min();
    return key;
}

bool HeapBin::verify() {
    clear();
    if (!m_roots)
        return true;
    if (!m_min)
        find_min();
    if (!m_min) {
        std::cerr << "non-empty heap cannot find minimum" << std::endl;
        return false;
    }
    if (!isok(m_roots, nullptr))
        return false;
    bool min_at_top = false;
    for (Node* r = m_roots; r; r = r->m_sibling)
        if (r == m_min)
            min_at_top = true;
    if (!min_at_top) {
        std::cerr << "minimum node is not in top of heap" << std::endl;
        return false;
    }
    return HeapBase::verify();
}

// A child list starts at the parent's degree less one (and is empty under a degree-0 parent).
bool HeapBin::isok(Node* list, Node* parent) {
    if (parent) {
        const bool ok = list ? list->m_degree == parent->m_degree - 1 : parent->m_degree == 0;
        if (!ok) {
            std::cerr << "degree is not descending" << std::endl;
            return false;
        }
    }
    for (Node* n = list; n; n = n->m_sibling) {
        if (!verify_node(n))
            return false;
        if (n->m_parent != parent) {
            std::cerr << "tree structure is corrupted" << std::endl;
            return false;
        }
        if (parent && n == m_min) {
            std::cerr << "minimum node is not in top of heap" << std::endl;
            return false;
        }
        if (!isok(n->m_child, n))
            return false;
    }
    return true;
}

bool HeapBin::verify_node(Node* n) {
    if (n->m_parent) {
        const bool ok = n->m_degree > 0 ? (n->m_sibling && n->m_sibling->m_degree == n->m_degree - 1)
                                        : n->m_sibling == nullptr;
        if (!ok) {
            std::cerr << "degree is not decreasing" << std::endl;
            return false;
        }
        if (n->m_parent->m_value > n->m_value) {
            std::cerr << "value is not increasing" << std::endl;
            return false;
        }
    } else {
        if (n->m_sibling && n->m_sibling->m_degree <= n->m_degree) {
            std::cerr << "degree is not increasing" << std::endl;
            return false;
        }
        if (m_min->m_value > n->m_value) {
            std::cerr << "min is not minimal" << std::endl;
            return false;
        }
    }
    return base_verify_node(n);
}

void HeapBin::print(std::ostream& out) const { out << "NYI\n"; }
