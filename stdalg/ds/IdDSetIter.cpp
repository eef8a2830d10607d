// IdDSetIter: the walking order, the position ends and the odometer step.
#include "ds/IdDSetIter.h"

#include "ds/BitVecIter.h"

#include <algorithm>

IdDSetIter::IdDSetIter(int k) : m_k(k), m_valid(false), m_cur(k), m_ends(k), m_free(0), m_ready(false) {}

IdDSetIter::~IdDSetIter() = default;

void IdDSetIter::restart(const ds_bitvec& allowed, const std::vector<int>& forced,
                         const std::vector<int>& choice) {
    m_valid = false;
    m_ready = false;
    m_ids.clear();
    const int nforced = static_cast<int>(forced.size());
    const int need = nforced + (choice.empty() ? 0 : 1);
    if (m_k < need)
        return;
    m_free.copy(allowed);
    for (const std::vector<int>* list : {&forced, &choice}) {
        for (int id : *list) {
            m_ids.push_back(id);
            if (id >= 0 && id < m_free.size())
                m_free.clr_ind(id);
        }
    }
    for (ds_bitvec_iter it(m_free, 0); it; ++it)
        m_ids.push_back(it);

    const int size = static_cast<int>(m_ids.size());
    const int* base = m_ids.data();
    for (int j = 0; j < m_k; ++j) {
        // Room for the positions behind j: its last start is size - (m_k - j).
        int end = size - (m_k - j) + 1;
        if (j < nforced)
            end = j + 1;
        else if (j == nforced && !choice.empty())
            end = std::min(j + 2, end);
        m_ends[j] = base + std::max(end, j);
    }
    m_ready = true;
}

void IdDSetIter::first() {
    m_valid = m_ready && static_cast<int>(m_ids.size()) >= m_k;
    if (!m_valid)
        return;
    for (int j = 0; j < m_k; ++j) {
        m_cur[j] = m_ids.data() + j;
        on_add_to_set(j, *m_cur[j]);
    }
}

bool IdDSetIter::operator++() {
    if (m_valid)
        m_valid = forward(m_k - 1);
    return m_valid;
}

bool IdDSetIter::forward(int j) {
    if (j < 0)
        return false;
    on_remove_from_set(j, *m_cur[j]);
    ++m_cur[j];
    if (m_cur[j] >= m_ends[j]) {
        if (!forward(j - 1))
            return false;
        m_cur[j] = m_cur[j - 1] + 1;
    }
    on_add_to_set(j, *m_cur[j]);
    return true;
}

void IdDSetIter::on_remove_from_set(int, int) {}

void IdDSetIter::on_add_to_set(int, int) {}
