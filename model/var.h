// Variables of the model: the light ModelVarBase/ModelVar<State> of a universe with their state tags,
// and the pathway variables bpm_basevar/bpm_var<State>.
#ifndef VESK_MODEL_VAR_H
#define VESK_MODEL_VAR_H

#include "error.h"

#include <list>
#include <string>

class ModelVarBase {
public:
    virtual ~ModelVarBase() {}
    virtual int get_state_card() const = 0;

    int m_kind = 0;       // kind index, as translated by the kind tables
    int m_state_card = 0; // number of states
    std::string m_name;   // first name
    int m_id = -1;
};

// State tags: each names a kind of biological variable and fixes its number of states.
struct bpm_prot_state {
    static constexpr int card = 2;
};
struct bpm_mrna_state {
    static constexpr int card = 2;
};
struct bpm_complex_state {
    static constexpr int card = 2;
};
struct bpm_event_state {
    static constexpr int card = 2;
};
struct bpm_stimu_state {
    static constexpr int card = 2;
};
struct bpm_gene_state {
    static constexpr int card = 3;
};
struct bpm_tf_state {
    static constexpr int card = 3;
};

template <class State> class ModelVar : public ModelVarBase {
public:
    ModelVar() { m_state_card = State::card; }
    explicit ModelVar(int id) : ModelVar() { m_id = id; }
    int get_state_card() const override { return State::card; }
};

// Opaque parts of the pathway model: a variable only carries pointers to them.
class bpm_system;
class bpm_expnode;
class binned_distrib;

// The abstract pathway variable.
class bpm_basevar {
public:
    bpm_basevar(bpm_system* system, int id) : m_system(system), m_id(id) {}
    virtual ~bpm_basevar() {}

    virtual int get_state_card() const = 0;
    // A copy of this variable bound to `system`.
    virtual bpm_basevar* clone(bpm_system* system) const = 0;
    virtual binned_distrib* get_state_dst(int state) = 0;
    virtual float get_state_prob(int state, int value) = 0;
    virtual void add_tf_rule(bpm_expnode* rule) = 0;
    virtual void del_tf_rule(bpm_expnode* rule) = 0;
    virtual int eval(int state) = 0;
    virtual void calc(int state, binned_distrib& dst) = 0;
    // Attribute rows of the pathway table: name, value and two further words.
    virtual void set_attr(const std::string& name, const std::string& value, const std::string& extra1,
                          const std::string& extra2);

    // Two variables are the same when their ids are.
    static bool compare(const bpm_basevar* a, const bpm_basevar* b) { return a->m_id == b->m_id; }

    bpm_system* m_system;
    int m_kind = 0;
    int m_state_card = 1;
    int m_id_in_kind = 0;
    std::string m_name;
    int m_id;
    std::list<bpm_expnode*> m_rules; // regulation rules
    int m_mark = 0;
    int m_level = 0;
};

// A pathway variable over the states of `State`. Its evaluation slots do nothing at this level.
template <class State> class bpm_var : public bpm_basevar {
public:
    bpm_var(bpm_system* system, int id) : bpm_basevar(system, id) {}

    int get_state_card() const override { return State::card; }
    bpm_basevar* clone(bpm_system* system) const override {
        bpm_var* copy = new bpm_var(*this);
        copy->m_system = system;
        return copy;
    }
    binned_distrib* get_state_dst(int) override {
        static constexpr char kVarSrc[] = "../model/var";
        VESK_FATAL(kVarSrc, "Should never reach this place in ganios distribution!\n");
    }
    float get_state_prob(int, int) override { return 0.0f; }
    void add_tf_rule(bpm_expnode*) override {}
    void del_tf_rule(bpm_expnode*) override {}
    int eval(int) override { return 0; }
    void calc(int, binned_distrib&) override {}
};

#endif
