// RatioExperDataSetReal: merging reader and standardisation.
#include "RatioExperDataSetReal.h"

#include "error.h"
#include "idbound.h"

#include <cmath>
#include <iostream>
#include <limits>
#include <map>
#include <utility>

static constexpr char kSrc[] = "RatioExperDataSetReal";

// The variable whose sums are traced on standard output.
static constexpr int kTracedVar = 91;

void RatioExperDataSetReal::read(std::istream& key, std::istream& data, float fill) {
    m_E = 0;
    std::map<std::pair<int, int>, int> cond_of_pair;
    std::map<int, int> cond_of_exp;
    std::vector<int> counter;
    int e, series, cond_a, cond_b;
    std::string ignored1, ignored2;
    while (key >> e >> ignored1 >> ignored2 >> series >> cond_a >> cond_b) {
        key.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        if (!input_id_ok(series))
            VESK_FATAL(kSrc, "Bad series num " << series);
        // Every new pair of conditions makes a column of the data matrix.
        if (m_E >= input_id_limit(m_universe.size()) && !cond_of_pair.count(std::make_pair(cond_a, cond_b)))
            VESK_FATAL(kSrc, "Bad exp num " << e);
        auto found = cond_of_pair.emplace(std::make_pair(cond_a, cond_b), m_E);
        const int c = found.first->second;
        if (found.second) {
            ++m_E;
            counter.push_back(0);
            m_e_series.resize(m_E, 0);
            m_e_cond_a.resize(m_E, 0);
            m_e_cond_b.resize(m_E, 0);
        }
        cond_of_exp[e] = c;
        ++counter[c];
        m_e_series[c] = series;
        m_e_cond_a[c] = cond_a;
        m_e_cond_b[c] = cond_b;
        if (series >= static_cast<int>(m_series.size()))
            m_series.resize(series + 1);
        m_series[series].m_members.push_front(c);
    }
    std::cerr << "m_E is " << m_E << std::endl;

    const int nv = m_universe.size();
    m_data.resize(nv, m_E, fill);
    m_data.set_all(fill);
    m_data.set_all(0.0f);
    int v;
    float val;
    while (data >> e >> v >> val) {
        if (v < 0 || v >= nv)
            VESK_FATAL(kSrc, "Bad var num " << v);
        auto it = cond_of_exp.find(e);
        if (it == cond_of_exp.end())
            VESK_FATAL(kSrc, "Bad exp num " << e);
        m_data(v, it->second) += val;
        if (v == kTracedVar)
            std::cout << it->second << " added " << val << std::endl;
    }
    for (int vv = 0; vv < nv; ++vv) {
        for (int c = 0; c < m_E; ++c) {
            m_data(vv, c) /= static_cast<float>(counter[c]);
            if (vv == kTracedVar)
                std::cout << "exp" << c << " val" << m_data(vv, c) << " counter" << counter[c] << std::endl;
        }
    }
    std::cerr << "out of here\n";
}

void RatioExperDataSetReal::cond_standartize() {
    const int nv = m_data.rows();
    for (int c = 0; c < m_data.cols(); ++c) {
        long double sum = 0.0L;
        for (int v = 0; v < nv; ++v)
            sum += m_data(v, c);
        const long double mean = sum / nv;
        long double ss = 0.0L;
        for (int v = 0; v < nv; ++v) {
            const long double d = m_data(v, c) - mean;
            ss += d * d;
        }
        const long double sd = std::sqrt(ss / nv);
        for (int v = 0; v < nv; ++v)
            m_data(v, c) = static_cast<float>((m_data(v, c) - mean) / sd);
    }
}
