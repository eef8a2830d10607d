// DsetAssign: slot bookkeeping and the one-pass lattice update on insertion.
#include "ds/DsetAssign.h"

#include "error.h"

#include <iostream>

static constexpr char kSrc[] = "ds/DsetAssign";

DsetAssign::DsetAssign()
    : m_space(nullptr), m_slots(0), m_values(0), m_rows(0), m_tmp(0), m_active(0), m_count(0),
      m_verbose(false) {
    std::cerr << "DsetAssign default construction" << std::endl;
}

DsetAssign::DsetAssign(const MultiDimIdSpace& space, int values, int slots, int rows, bool verbose)
    : m_space(&space), m_slots(slots), m_values(values), m_rows(rows), m_tmp(rows), m_sets(space.m_size),
      m_vars(slots, -1), m_active(0), m_count(0), m_verbose(verbose) {
    m_sets[0].reset(new ds_bitvec(rows));
    m_sets[0]->set(true);
}

void DsetAssign::insert_base_var(int var, const DsetValueSets& value_sets) {
    if (m_vars[0] != -1)
        remove_i_var(0);
    insert_var_at(var, value_sets, 0);
}

int DsetAssign::insert_var(int var, const DsetValueSets& value_sets) {
    int slot = -1;
    for (int i = 1; i < m_slots; ++i) {
        if (m_vars[i] == -1) {
            slot = i;
            break;
        }
    }
    if (m_verbose)
        std::cerr << "DAssign, select i " << slot << std::endl;
    insert_var_at(var, value_sets, slot);
    return slot;
}

void DsetAssign::insert_var_at(int var, const DsetValueSets& value_sets, int slot) {
    if (slot >= 0 && slot < m_slots) {
        if (m_vars[slot] == -1)
            ++m_count;
        m_vars[slot] = var;
    }
    const unsigned int mask = m_space->mask(slot);
    m_active |= mask;
    const unsigned int anti = ~m_active;
    if (m_verbose) {
        std::cerr << "DAssign, index mask " << mask << std::endl;
        std::cerr << "DAssign, index antu mask " << ~mask << std::endl;
        std::cerr << "DAssign, active mask " << m_active << " anti " << anti << std::endl;
    }
    const int end = static_cast<int>(m_sets.size());
    for (int u = 0; u < end; ++u) {
        if (static_cast<unsigned int>(u) & anti)
            continue;
        const int d = m_space->digit(u, slot);
        if (d == 0)
            continue;
        // A lower id: it has u's digits with this slot's digit cleared, so it is already final.
        const int from = static_cast<int>(static_cast<unsigned int>(u) & ~mask);
        const int v = d - 1;
        std::unique_ptr<ds_bitvec>& target = m_sets[u];
        if (v < static_cast<int>(value_sets.size()) && value_sets[v] && m_sets[from]) {
            if (!target) {
                m_tmp.copy(*m_sets[from]);
                m_tmp.andeq(*value_sets[v]);
                if (m_tmp.on_bits() > 0) {
                    target.reset(new ds_bitvec(m_tmp));
                    if (m_verbose)
                        std::cerr << "DAssign tmp on_bits " << m_tmp.on_bits() << std::endl;
                } else if (m_verbose) {
                    std::cerr << "DAssign empty inter" << std::endl;
                }
            } else {
                target->copy(*m_sets[from]);
                target->andeq(*value_sets[v]);
                if (m_verbose)
                    std::cerr << "DAssign both active" << std::endl;
            }
        } else if (target) {
            target->set(false);
        }
    }
}

void DsetAssign::remove_i_var(int slot) {
    if (m_vars[slot] == -1)
        VESK_FATAL(kSrc, "Try to remove_i_var i=" << slot << " with no var there");
    m_active &= ~m_space->mask(slot);
    --m_count;
    m_vars[slot] = -1;
    if (m_verbose)
        std::cerr << "DAssign, mask now " << m_active << std::endl;
}

void DsetAssign::remove_var(int var) {
    for (int i = 1; i < m_slots; ++i) {
        if (m_vars[i] == var) {
            remove_i_var(i);
            return;
        }
    }
    VESK_FATAL(kSrc, "Try removing non existing var, id " << var);
}

void DsetAssign::clear() {
    for (int i = 0; i < m_slots; ++i) {
        if (m_vars[i] != -1)
            remove_i_var(i);
    }
}

void DsetAssign::dump_state(std::ostream& out) const {
    for (int i = 0; i < m_slots; ++i) {
        if (m_vars[i] == -1)
            continue;
        out << "slot " << i << " var " << m_vars[i] << ":";
        const int step = 1 << (i * static_cast<int>(m_space->m_bits));
        const int values = static_cast<int>(m_space->m_masks[i] >> (i * m_space->m_bits));
        for (int d = 1; d <= values; ++d) {
            const ds_bitvec* s = m_sets[d * step].get();
            out << ' ';
            if (s)
                out << s->on_bits() << ": ";
            else
                out << 0;
        }
        out << '\n';
    }
}

bool DsetAssign::verify() const {
    if (!m_sets[0] || m_sets[0]->size() != m_rows || m_sets[0]->on_bits() != m_rows) {
        std::cerr << "DsetAssign: the empty assignment doesn't hold all " << m_rows << " rows" << std::endl;
        return false;
    }
    unsigned int active = 0;
    int count = 0;
    for (int i = 0; i < m_slots; ++i) {
        if (m_vars[i] != -1) {
            active |= m_space->mask(i);
            ++count;
        }
    }
    if (active != m_active || count != m_count) {
        std::cerr << "DsetAssign: active mask " << m_active << " and count " << m_count << " but slots give "
                  << active << " and " << count << std::endl;
        return false;
    }
    for (std::size_t u = 0; u < m_sets.size(); ++u) {
        if (m_sets[u] && m_sets[u]->size() != m_rows) {
            std::cerr << "DsetAssign: set " << u << " has width " << m_sets[u]->size() << std::endl;
            return false;
        }
    }
    return true;
}
