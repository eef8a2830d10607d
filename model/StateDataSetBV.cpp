// StateDataSetBV: the discrete reader, value moves and the consistency check.
#include "StateDataSetBV.h"

#include "error.h"
#include "idbound.h"

#include <cmath>
#include <iostream>
#include <limits>
#include <new>

static constexpr char kSrc[] = "StateDataSetBV";

static bool has_bit(const ds_bitvec* bv, int e) {
    return bv && e >= 0 && e < bv->size() && ((bv->word(e / 32) >> (e & 31)) & 1u);
}

StateDataSetBV::StateDataSetBV(VarUniverse& universe, int card) : StateDataSetBase(universe), m_card(card) {}

StateDataSetBV::~StateDataSetBV() {
    free_map(m_map);
    free_map(m_out_map);
    free_map(m_pert);
}

void StateDataSetBV::free_map(std::vector<ds_bitvec*>& map) {
    for (ds_bitvec* bv : map)
        delete bv;
    map.clear();
}

void StateDataSetBV::fit_exp_tables(int n) {
    m_e_series.resize(n, 0);
    m_e_weight.resize(n, 1.0f);
    m_e_array.resize(n, 0);
}

void StateDataSetBV::read(std::istream& key, std::istream& data, float threshold) {
    m_is_io = false;
    std::cerr << "will read expr" << std::endl;
    int e, ignored_a, ignored_b, series;
    std::string ignored_s1, ignored_s2;
    int lines = 0;
    // The series stands in the sixth column of this key.
    while (key >> e >> ignored_s1 >> ignored_s2 >> ignored_a >> ignored_b >> series) {
        key.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        // Each variable and value holds a bit vector over the experiments.
        if (!input_id_ok(e, input_id_limit(static_cast<long long>(num_vars()) * m_card / 32)))
            VESK_FATAL(kSrc, "Bad exp num " << e);
        if (series < 0)
            VESK_FATAL(kSrc, "Bad series num " << series);
        std::cerr << "id " << e << " seri " << series << std::endl;
        if (e >= m_E)
            m_E = e + 1;
        fit_exp_tables(m_E);
        m_e_series[e] = series;
        add_to_series(e, series);
        ++lines;
    }
    std::cerr << "read " << lines << " experiments" << std::endl;
    std::cerr << "reading meas table to create the map\n";

    const int nv = num_vars();
    free_map(m_map);
    free_map(m_out_map);
    m_map.assign(static_cast<size_t>(nv) * m_card, nullptr);
    // Every variable starts at value 0 in every experiment.
    for (int v = 0; v < nv; ++v) {
        m_map[static_cast<size_t>(v) * m_card] = new ds_bitvec(m_E);
        m_map[static_cast<size_t>(v) * m_card]->set(true);
    }
    std::cerr << "m_map size " << m_map.size() << std::endl;

    int v, ignored, card;
    std::vector<float> probs;
    while (data >> v >> e >> ignored >> card) {
        if (card > 3)
            VESK_FATAL(kSrc, "Remove the temorary hardwired 3 cardinality limit");
        probs.assign(card > 0 ? card : 0, 0.0f);
        for (float& p : probs)
            data >> p;
        if (!data)
            break;
        if (v < 0 || v >= nv)
            VESK_FATAL(kSrc, "Bad var num " << v);
        int picked = -1;
        for (int i = 0; i < static_cast<int>(probs.size()); ++i)
            if (probs[i] >= threshold)
                picked = i;
        if (picked < 0)
            continue;
        if (picked >= m_card)
            VESK_FATAL(kSrc, "Cant set value of eid " << e << " " << v << " to new_val " << picked);
        ds_bitvec*& entry = m_map[static_cast<size_t>(v) * m_card + picked];
        if (!entry) {
            entry = new (std::nothrow) ds_bitvec(m_E);
            if (!entry)
                VESK_FATAL(kSrc, "Cannot allocate\n");
        }
        if (e < 0 || e >= m_E)
            VESK_FATAL(kSrc, "Too big e_id\n");
        // Set first, then clear value 0: a picked value 0 leaves the variable with no value here.
        entry->set_ind(e);
        m_map[static_cast<size_t>(v) * m_card]->clr_ind(e);
    }
}

float StateDataSetBV::get_state(const std::vector<ds_bitvec*>& map, int e, int v) const {
    const size_t first = static_cast<size_t>(v) * m_card;
    for (int i = 0; i < m_card && v >= 0 && first + i < map.size(); ++i)
        if (has_bit(map[first + i], e))
            return static_cast<float>(i);
    VESK_FATAL(kSrc, "Should always have one value bv on, e=" << e << " " << v);
}

void StateDataSetBV::set_state(std::vector<ds_bitvec*>& map, int e, int v, float val) {
    const size_t first = static_cast<size_t>(v) * m_card;
    if (!(val >= 0.0f && val < static_cast<float>(m_card) && val == std::round(val)) || v < 0 ||
        first + m_card > map.size() || e < 0 || e >= m_E)
        VESK_FATAL(kSrc, "Cant set value of eid " << e << " " << v << " to new_val " << val);
    for (int i = 0; i < m_card; ++i)
        if (map[first + i] && e < map[first + i]->size())
            map[first + i]->clr_ind(e);
    ds_bitvec*& entry = map[first + static_cast<int>(val)];
    if (!entry)
        entry = new ds_bitvec(m_E);
    entry->set_ind(e);
}

float StateDataSetBV::get_var_in_state(int e, int v) const { return get_state(m_map, e, v); }

void StateDataSetBV::set_var_in_state(int e, int v, float val) { set_state(m_map, e, v, val); }

float StateDataSetBV::get_var_out_state(int e, int v) const {
    return m_is_io ? get_state(m_out_map, e, v) : get_var_in_state(e, v);
}

void StateDataSetBV::set_var_out_state(int e, int v, float val) {
    if (m_is_io)
        set_state(m_out_map, e, v, val);
    else
        set_var_in_state(e, v, val);
}

bool StateDataSetBV::is_perturbed(int e, int v) const {
    return e >= 0 && e < static_cast<int>(m_pert.size()) && has_bit(m_pert[e], v);
}

void StateDataSetBV::set_max_eid(int num_e, bool io) {
    const int old_e = m_E;
    m_E = num_e;
    m_is_io = io;
    const size_t width = static_cast<size_t>(num_vars()) * m_card;
    if (m_map.size() < width)
        m_map.resize(width, nullptr);
    auto extend = [&](ds_bitvec* bv, size_t index) {
        bv->set_size(num_e);
        if (index % m_card == 0)
            for (int b = old_e; b < num_e; ++b)
                bv->set_ind(b);
    };
    for (size_t i = 0; i < m_map.size(); ++i)
        if (m_map[i])
            extend(m_map[i], i);
    if (io) {
        m_out_map.resize(m_map.size(), nullptr);
        for (size_t i = 0; i < m_map.size(); ++i) {
            if (!m_map[i])
                continue;
            // An out state not kept so far starts as the in state.
            if (!m_out_map[i])
                m_out_map[i] = new ds_bitvec(*m_map[i]);
            else
                extend(m_out_map[i], i);
        }
    }
    fit_exp_tables(num_e);
}

bool StateDataSetBV::verify() const {
    bool ok = true;
    const int nv = m_card > 0 ? static_cast<int>(m_map.size() / m_card) : 0;
    for (int v = 0; v < nv; ++v) {
        for (int e = 0; e < m_E; ++e) {
            int on = 0;
            for (int i = 0; i < m_card; ++i)
                if (has_bit(m_map[static_cast<size_t>(v) * m_card + i], e))
                    ++on;
            if (on > 1) {
                std::cerr << "double 1 at e " << e << " v " << v << std::endl;
                ok = false;
            } else if (on == 0) {
                std::cerr << "no val at e " << e << " v " << v << std::endl;
                ok = false;
            }
        }
    }
    return ok;
}
