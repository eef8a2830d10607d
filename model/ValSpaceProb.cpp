// ValSpaceProb: construction from options, tabulation and lookups.
#include "ValSpaceProb.h"

#include "error.h"
#include "options.h"
#include "plinear.h"

#include <cmath>
#include <iostream>
#include <memory>

static constexpr char kSrc[] = "ValSpaceProb";

ValSpaceProb::ValSpaceProb(options& opts, const std::string& scope, bool defer) {
    if (defer)
        return;
    std::cerr << "into func construction" << std::endl;
    const std::vector<std::string>* scopes = opts.get_strs(scope, "FuncScopes", true);
    std::vector<std::unique_ptr<scalar_func>> owned;
    std::vector<scalar_func*> funcs;
    for (size_t s = 0; scopes && s < scopes->size(); ++s) {
        std::cerr << "state = " << s << std::endl;
        const std::string& fscope = (*scopes)[s];
        const std::vector<float>* pts = opts.get_floats(fscope, "Points", true);
        const size_t n = pts ? pts->size() : 0;
        scalar_func* f = nullptr;
        if (n == 4)
            f = new sf_plinear<2>();
        else if (n == 6)
            f = new sf_plinear<3>();
        else if (n == 8)
            f = new sf_plinear<4>();
        else
            VESK_FATAL(kSrc, "No support for more then 4 point in discretization functions");
        f->init_from_options(opts, fscope);
        owned.emplace_back(f);
        funcs.push_back(f);
    }
    // Logit is read twice; the first reading is not used.
    opts.get_int(scope, "Logit", true);
    const float bin_size = opts.get_float(scope, "BinSize", true);
    const float range_max = opts.get_float(scope, "RangeMax", true);
    const float zero_state = opts.get_float(scope, "ZeroState", true);
    const float range_base = opts.get_float(scope, "RangeBase", true);
    const int trace = opts.get_int(scope, "Logit", true);
    init(funcs, range_base, zero_state, range_max, bin_size, trace);
}

void ValSpaceProb::init(const std::vector<scalar_func*>& funcs, float range_base, float zero_state,
                        float range_max, float bin_size, int trace) {
    m_states = static_cast<int>(funcs.size());
    m_inv_bin = 1.0f / bin_size;
    m_base = range_base;
    m_zero_state = static_cast<int>(zero_state);
    const float span = (range_max - range_base) / bin_size;
    const int bins = (span >= 0.0f ? static_cast<int>(span) : 0) + 1;
    if (trace)
        std::cerr << "VSProb max range " << bins << std::endl;

    m_probs.resize(0, 0, 0.0f);
    m_probs.resize(bins, m_states, 0.0f);
    m_state_of_bin.assign(bins, 0);
    std::vector<float> best(bins, 0.0f);
    for (int s = 0; s < m_states; ++s) {
        if (trace)
            std::cerr << "VSProb state " << s << std::endl;
        float x = range_base;
        for (int i = 0; i < bins; ++i, x += bin_size) {
            const float val = funcs[s]->eval(x);
            m_probs(i, s) = val;
            if (trace)
                std::cerr << "VSProb cur_range " << i << " val " << x << " = " << val << std::endl;
            if (val > best[i]) {
                best[i] = val;
                m_state_of_bin[i] = s;
            }
        }
    }

    if (trace) {
        std::cerr << "VSProb finally :\n";
        for (int i = 0; i < bins; ++i) {
            for (int s = 0; s < m_states; ++s)
                std::cerr << m_probs(i, s) << " ";
            std::cerr << "\n";
        }
        for (int i = 0; i < bins; ++i)
            std::cerr << m_state_of_bin[i] << " ";
        std::cerr << "\n";
        static const float samples[] = {1.5f, 1.3f, 1.2f, 0.9f, 0.81f, 0.8f, 0.79f, 0.75f, 0.7f};
        for (float a : samples) {
            for (float v : {-a, a}) {
                std::cerr << "State of val " << v << " " << get_state_of_val(v) << "\n";
                std::cerr << "Pr State of val " << v << " ";
                for (int s = 0; s < m_states; ++s)
                    std::cerr << get_val_state_prob(s, v) << " ";
                std::cerr << "\n";
            }
        }
    }
}

int ValSpaceProb::clamp_bin(float pos) const {
    const int last = static_cast<int>(m_state_of_bin.size()) - 1;
    if (!(pos >= 0.0f)) // a negative bin, or not a number
        return 0;
    if (pos >= static_cast<float>(last))
        return last;
    return static_cast<int>(pos);
}

int ValSpaceProb::get_state_of_val(float v) const {
    if (m_state_of_bin.empty()) // not initialised yet
        return 0;
    const float y = (v - m_base) * m_inv_bin;
    return m_state_of_bin[clamp_bin(v >= 0.0f ? std::ceil(y) : y)];
}

float ValSpaceProb::get_val_state_prob(int s, float v) const {
    if (m_state_of_bin.empty() || s < 0 || s >= m_probs.cols())
        return 0.0f;
    const float y = (v - m_base) * m_inv_bin;
    return m_probs(clamp_bin(v >= 0.0f ? y + 1.0f : y), s);
}
