// RatioExperDataSetReal: ratio experiments merged by the pair of conditions they compare, each merged
// condition holding the mean of its experiments.
#ifndef VESK_MODEL_RATIOEXPERDATASETREAL_H
#define VESK_MODEL_RATIOEXPERDATASETREAL_H

#include "Matrix.h"
#include "StateDataSetBase.h"

#include <istream>
#include <vector>

class RatioExperDataSetReal {
public:
    explicit RatioExperDataSetReal(VarUniverse& universe) : m_universe(universe) {}
    virtual ~RatioExperDataSetReal() {}

    // Key: experiment id, two ignored words, series, first and second condition. Data: experiment id,
    // variable id, value. An absent cell counts as 0 in its condition's mean.
    virtual void read(std::istream& key, std::istream& data, float fill);
    // Standardises every merged condition over all variables.
    void cond_standartize();
    void reset() { m_data.resize(0, 0, 0.0f); }

    VarUniverse& m_universe;
    Matrix<float> m_data; // variables by merged conditions
    std::vector<StateDataSeriesInfo> m_series;
    std::vector<int> m_e_series;
    std::vector<int> m_e_cond_a;
    std::vector<int> m_e_cond_b;
    int m_E = 0;
};

#endif
