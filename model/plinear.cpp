// Option readers of the scalar functions.
#include "plinear.h"

#include "options.h"

void sf_const::init_from_options(options& opts, const std::string& scope) {
    m_val = opts.get_float(scope, "ConstVal", true);
}

void sf_linear::init_from_options(options& opts, const std::string& scope) {
    m_y0 = opts.get_float(scope, "y0", true);
    m_k = opts.get_float(scope, "k", true);
}

void sf_delta::init_from_options(options& opts, const std::string& scope) {
    m_val = opts.get_float(scope, "DeltaVal", true);
}

void plinear_points(options& opts, const std::string& scope, std::vector<float>& xs, std::vector<float>& ys) {
    xs.clear();
    ys.clear();
    const std::vector<float>* pts = opts.get_floats(scope, "Points", true);
    if (!pts)
        return;
    for (size_t i = 0; i + 1 < pts->size(); i += 2) {
        xs.push_back((*pts)[i]);
        ys.push_back((*pts)[i + 1]);
    }
}
