// JointDist counters: counting, normalizing and reading densities.
#include "JointDist.h"

#include "LocalDist.h"
#include "error.h"

#include <algorithm>
#include <iostream>

static constexpr char kSrc[] = "JointDist";

template <class T> void JointDist<T>::print(std::ostream& /*os*/) const {
    std::cerr << "NYI for this JointDist derivation";
}

template class JointDist<int>;
template class JointDist<float>;

float JDVectorBase::density(const std::vector<int>& state, const std::vector<int>& vars) {
    if (m_total != 1.0f)
        normalize();
    return m_vals[state[vars[0]]];
}

float JDVectorBase::density(const std::vector<int>& vals) {
    if (m_total != 1.0f)
        normalize();
    return m_vals[vals[0]];
}

void JDVectorBase::print(std::ostream& os) const {
    for (float v : m_vals)
        os << " " << v;
}

void JDVector::count(const std::vector<int>& state, const std::vector<int>& vars) {
    count(state, vars, 1.0f);
}

void JDVector::count(const std::vector<int>& vals) { count(vals, 1.0f); }

void JDVector::count(const std::vector<int>& state, const std::vector<int>& vars, float weight) {
    m_total += weight;
    m_vals[state[vars[0]]] += weight;
}

void JDVector::count(const std::vector<int>& vals, float weight) {
    m_total += weight;
    m_vals[vals[0]] += weight;
}

void JDVector::normalize() {
    for (float& v : m_vals)
        v /= m_total;
    m_total = 1.0f;
}

JDLogVector::JDLogVector(int n) : JDVectorBase(n, kLogZero, kLogZero) {}

void JDLogVector::count(const std::vector<int>& state, const std::vector<int>& vars) {
    count(state, vars, 0.0f);
}

void JDLogVector::count(const std::vector<int>& vals) {
    log_sum_log(m_total, 0.0f);
    log_sum_log(m_vals[vals[0]], 1.0f);
}

void JDLogVector::count(const std::vector<int>& state, const std::vector<int>& vars, float weight) {
    log_sum_log(m_total, weight);
    log_sum_log(m_vals[state[vars[0]]], weight);
}

void JDLogVector::count(const std::vector<int>& vals, float weight) {
    log_sum_log(m_total, weight);
    log_sum_log(m_vals[vals[0]], weight);
}

void JDLogVector::normalize() {
    for (float& v : m_vals)
        v -= m_total;
    m_total = 0.0f;
}

JDTabular::JDTabular(const std::vector<int>& cards) : m_id_factor{}, m_num_vars(0), m_log_space(false) {
    const int n = static_cast<int>(cards.size());
    if (n >= 10)
        VESK_FATAL(kSrc, "Cannot init JDTable with more than 10 inputs, exiting on attempt to init with "
                             << n << " inputs");
    int size = 1;
    for (int i = 0; i < n; ++i) {
        m_id_factor[i] = size;
        size *= cards[i];
    }
    m_id_factor[n] = size;
    m_num_vars = n;
    m_vals.assign(size, 0.0f);
    m_total = 0.0f;
}

int JDTabular::index_of_state(const std::vector<int>& state, const std::vector<int>& vars) const {
    int ndx = 0;
    for (int k = 0; k < m_num_vars; ++k)
        ndx += m_id_factor[k] * state[vars[k]];
    return ndx;
}

int JDTabular::index_of_vals(const std::vector<int>& vals) const {
    int ndx = 0;
    for (int k = 0; k < m_num_vars; ++k)
        ndx += m_id_factor[k] * vals[k];
    return ndx;
}

void JDTabular::add(int ndx, float weight) {
    if (m_log_space) {
        log_sum_log(m_total, weight);
        log_sum_log(m_vals[ndx], weight);
    } else {
        m_total += weight;
        m_vals[ndx] += weight;
    }
}

void JDTabular::count(const std::vector<int>& state, const std::vector<int>& vars) {
    add(index_of_state(state, vars), m_log_space ? 0.0f : 1.0f);
}

void JDTabular::count(const std::vector<int>& vals) { add(index_of_vals(vals), m_log_space ? 0.0f : 1.0f); }

void JDTabular::count(const std::vector<int>& state, const std::vector<int>& vars, float weight) {
    add(index_of_state(state, vars), weight);
}

void JDTabular::count(const std::vector<int>& vals, float weight) { add(index_of_vals(vals), weight); }

float JDTabular::density(const std::vector<int>& state, const std::vector<int>& vars) {
    if (m_total != 1.0f)
        normalize();
    return m_vals[index_of_state(state, vars)];
}

float JDTabular::density(const std::vector<int>& vals) {
    if (m_total != 1.0f)
        normalize();
    return m_vals[index_of_vals(vals)];
}

void JDTabular::normalize() {
    if (m_log_space) {
        for (float& v : m_vals)
            v -= m_total;
        m_total = 0.0f;
    } else {
        for (float& v : m_vals)
            v /= m_total;
        m_total = 1.0f;
    }
}

void JDTabular::init_prior(float v) { std::fill(m_vals.begin(), m_vals.end(), v); }

void JDTabular::set_log_space(bool on) {
    m_log_space = on;
    m_total = on ? kLogZero : 0.0f;
    std::fill(m_vals.begin(), m_vals.end(), m_total);
}
