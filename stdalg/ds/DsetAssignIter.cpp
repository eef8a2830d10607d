// DsetAssignIter: the stride walk over full assignments; the Hide variant's extra fixed digits.
#include "ds/DsetAssignIter.h"

#include <iostream>

DsetAssignIter::DsetAssignIter(const DsetAssign& assign) { reset_walk(assign); }

DsetAssignIter::~DsetAssignIter() = default;

void DsetAssignIter::reset_walk(const DsetAssign& assign) {
    m_assign = &assign;
    const MultiDimIdSpace& space = *assign.m_space;
    m_end = space.m_size;
    m_cur = m_end;
    m_stride = 1 << space.m_bits;
    m_fixed = ~assign.m_active & static_cast<unsigned int>(space.m_size - 1);
}

void DsetAssignIter::restart(const DsetAssign& assign) { reset_walk(assign); }

bool DsetAssignIter::first() {
    m_cur = -m_stride;
    return ++*this;
}

bool DsetAssignIter::operator++() {
    const ds_bitvec& partial = m_assign->m_space->m_partial;
    for (;;) {
        m_cur += m_stride;
        if (m_cur >= m_end)
            return false;
        // The free digits read as all ones and digit 0 as 1: a digit left 0 is an unfixed parent.
        if (partial.get_ind(static_cast<int>((static_cast<unsigned int>(m_cur) | m_fixed) + 1u)))
            continue;
        if (static_cast<unsigned int>(m_cur) & m_fixed)
            continue;
        const ds_bitvec* rows = m_assign->set_of(m_cur);
        if (!rows || rows->on_bits() == 0)
            continue;
        return true;
    }
}

DsetAssignIterHide::DsetAssignIterHide(const DsetAssign& assign, const std::vector<int>& hidden)
    : DsetAssignIter(assign), m_hidden(hidden) {
    hide();
}

void DsetAssignIterHide::restart(const DsetAssign& assign) {
    reset_walk(assign);
    hide();
}

void DsetAssignIterHide::hide() {
    const DsetAssign& a = *m_assign;
    for (int var : m_hidden) {
        std::cerr << "checking for hide " << var << std::endl;
        for (int i = 0; i < a.m_slots; ++i) {
            std::cerr << "ith var is " << a.m_vars[i] << std::endl;
            if (a.m_vars[i] == var) {
                std::cerr << "add to anti mask " << a.m_space->mask(i) << std::endl;
                m_fixed |= a.m_space->mask(i);
            }
        }
    }
}
