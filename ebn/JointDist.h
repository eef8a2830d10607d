// JointDist and its classes: the counters into which inference writes posteriors.
#ifndef VESK_EBN_JOINTDIST_H
#define VESK_EBN_JOINTDIST_H

#include <ostream>
#include <vector>

// `state` is indexed by rvid and `vars` lists rvids; `vals` holds values already in variable
// order. Linear counters add weights (1 by default); log-space counters take log weights (0 by
// default) and log-sum them. A common running total is kept beside the entries; density
// normalizes first whenever the total is not 1.0, so a log-space counter (total 0 once
// normalized) normalizes on every call, harmlessly, and gives a log probability.
template <class T> class JointDist {
public:
    JointDist() : m_total(0.0f) {}
    virtual ~JointDist() = default;

    virtual bool is_log_space() const = 0;
    virtual JointDist<T>* clone() const = 0;
    virtual void count(const std::vector<int>& state, const std::vector<int>& vars) = 0;
    virtual void count(const std::vector<int>& vals) = 0;
    virtual void count(const std::vector<int>& state, const std::vector<int>& vars, float weight) = 0;
    virtual void count(const std::vector<int>& vals, float weight) = 0;
    virtual float density(const std::vector<int>& state, const std::vector<int>& vars) = 0;
    virtual float density(const std::vector<int>& vals) = 0;
    virtual void normalize() = 0;
    // The base form: "NYI for this JointDist derivation" on the error stream.
    virtual void print(std::ostream& os) const;

    float get_total() const { return m_total; }

protected:
    float m_total;
};

// Shared body of the one-variable counters: a vector of entries over the first variable's values.
class JDVectorBase : public JointDist<int> {
public:
    float density(const std::vector<int>& state, const std::vector<int>& vars) override;
    float density(const std::vector<int>& vals) override;
    void print(std::ostream& os) const override;

    int size() const { return static_cast<int>(m_vals.size()); }
    float entry(int i) const { return m_vals[i]; }

protected:
    JDVectorBase(int n, float fill, float total) : m_vals(n, fill) { m_total = total; }

    std::vector<float> m_vals;
};

// Linear counts over one variable.
class JDVector : public JDVectorBase {
public:
    explicit JDVector(int n) : JDVectorBase(n, 0.0f, 0.0f) {}

    bool is_log_space() const override { return false; }
    JointDist<int>* clone() const override { return new JDVector(*this); }
    void count(const std::vector<int>& state, const std::vector<int>& vars) override;
    void count(const std::vector<int>& vals) override;
    void count(const std::vector<int>& state, const std::vector<int>& vars, float weight) override;
    void count(const std::vector<int>& vals, float weight) override;
    void normalize() override;
};

// Log-space counts over one variable. count(vals) without a weight adds log weight 1 to the
// entry but log weight 0 to the total, so an unweighted entry grows by e against its total.
class JDLogVector : public JDVectorBase {
public:
    explicit JDLogVector(int n);

    bool is_log_space() const override { return true; }
    JointDist<int>* clone() const override { return new JDLogVector(*this); }
    void count(const std::vector<int>& state, const std::vector<int>& vars) override;
    void count(const std::vector<int>& vals) override;
    void count(const std::vector<int>& state, const std::vector<int>& vars, float weight) override;
    void count(const std::vector<int>& vals, float weight) override;
    void normalize() override;
};

// A table over up to 9 variables, the first one fastest; linear unless set to log space.
class JDTabular : public JointDist<int> {
public:
    explicit JDTabular(const std::vector<int>& cards);

    bool is_log_space() const override { return m_log_space; }
    JointDist<int>* clone() const override { return new JDTabular(*this); }
    void count(const std::vector<int>& state, const std::vector<int>& vars) override;
    void count(const std::vector<int>& vals) override;
    void count(const std::vector<int>& state, const std::vector<int>& vars, float weight) override;
    void count(const std::vector<int>& vals, float weight) override;
    float density(const std::vector<int>& state, const std::vector<int>& vars) override;
    float density(const std::vector<int>& vals) override;
    void normalize() override;

    // Fills every entry with v.
    void init_prior(float v);
    // Switches the counting space and empties the counter: entries and total restart at 0
    // (linear) or at the log of zero.
    void set_log_space(bool on);
    int size() const { return static_cast<int>(m_vals.size()); }
    float entry(int i) const { return m_vals[i]; }

private:
    int index_of_state(const std::vector<int>& state, const std::vector<int>& vars) const;
    int index_of_vals(const std::vector<int>& vals) const;
    void add(int ndx, float weight);

    std::vector<float> m_vals;
    int m_id_factor[10];
    int m_num_vars;
    bool m_log_space;
};

extern template class JointDist<int>;
extern template class JointDist<float>;

#endif
