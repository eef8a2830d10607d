// scalar_func and its members: constant, linear, delta and piecewise linear functions of one float,
// the membership functions of the value spaces.
#ifndef VESK_MODEL_PLINEAR_H
#define VESK_MODEL_PLINEAR_H

#include <string>
#include <vector>

class options;

class scalar_func {
public:
    virtual ~scalar_func() {}
    virtual float eval(float x) const = 0;
    float operator()(float x) const { return eval(x); }
    virtual void init_from_options(options& opts, const std::string& scope) = 0;
};

// The constant `m_val`; option ConstVal.
class sf_const : public scalar_func {
public:
    explicit sf_const(float val = 0.0f) : m_val(val) {}
    float eval(float) const override { return m_val; }
    void init_from_options(options& opts, const std::string& scope) override;
    float m_val;
};

// k x + y0; options y0, k.
class sf_linear : public scalar_func {
public:
    sf_linear(float y0 = 0.0f, float k = 0.0f) : m_y0(y0), m_k(k) {}
    float eval(float x) const override { return m_k * x + m_y0; }
    void init_from_options(options& opts, const std::string& scope) override;
    float m_y0;
    float m_k;
};

// 1 at `m_val`, 0 elsewhere; option DeltaVal.
class sf_delta : public scalar_func {
public:
    explicit sf_delta(float val = 0.0f) : m_val(val) {}
    float eval(float x) const override { return x == m_val ? 1.0f : 0.0f; }
    void init_from_options(options& opts, const std::string& scope) override;
    float m_val;
};

// Piecewise linear through N points, flat before the first and after the last. Option Points:
// x0 y0 x1 y1 ... (2N floats).
template <int N> class sf_plinear : public scalar_func {
public:
    sf_plinear() {
        for (int i = 0; i < N; ++i)
            m_x[i] = m_y[i] = 0.0f;
    }

    float eval(float x) const override {
        if (x < m_x[0])
            return m_y[0];
        for (int i = 1; i < N; ++i)
            if (m_x[i] > x)
                return m_y[i - 1] + (m_y[i] - m_y[i - 1]) * (x - m_x[i - 1]) / (m_x[i] - m_x[i - 1]);
        return m_y[N - 1];
    }

    // Takes the first N points of xs and ys (fewer if they are shorter).
    virtual void init(const std::vector<float>& xs, const std::vector<float>& ys) {
        for (int i = 0; i < N && i < static_cast<int>(xs.size()) && i < static_cast<int>(ys.size()); ++i) {
            m_x[i] = xs[i];
            m_y[i] = ys[i];
        }
    }

    void init_from_options(options& opts, const std::string& scope) override;

    float get_pt_x(int i) const { return m_x[i]; }
    float get_pt_y(int i) const { return m_y[i]; }

    float m_x[N];
    float m_y[N];
};

// Splits the Points array x0 y0 x1 y1 ... into its xs and ys.
void plinear_points(options& opts, const std::string& scope, std::vector<float>& xs, std::vector<float>& ys);

template <int N> void sf_plinear<N>::init_from_options(options& opts, const std::string& scope) {
    std::vector<float> xs, ys;
    plinear_points(opts, scope, xs, ys);
    init(xs, ys);
}

#endif
