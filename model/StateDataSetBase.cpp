// StateDataSetBase: ownership of the array set and the series table.
#include "StateDataSetBase.h"

#include "ArraysGeneSets.h"
#include "error.h"
#include "idbound.h"

static constexpr char kSrc[] = "StateDataSetBase";

StateDataSetBase::StateDataSetBase(const StateDataSetBase& src)
    : m_universe(src.m_universe), m_series(src.m_series), m_e_series(src.m_e_series),
      m_e_weight(src.m_e_weight), m_E(src.m_E), m_arrays(src.m_arrays), m_e_array(src.m_e_array),
      m_own_arrays(false) {}

StateDataSetBase::~StateDataSetBase() {
    if (m_own_arrays)
        delete m_arrays;
}

void StateDataSetBase::set_arrays(ArraysGeneSets* arrays) {
    if (m_own_arrays && arrays != m_arrays)
        delete m_arrays;
    m_arrays = arrays;
    m_own_arrays = true;
}

void StateDataSetBase::add_to_series(int e, int series) {
    if (!input_id_ok(series))
        VESK_FATAL(kSrc, "Bad series num " << series);
    if (series >= static_cast<int>(m_series.size()))
        m_series.resize(series + 1);
    m_series[series].m_members.push_front(e);
}
