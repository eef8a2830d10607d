// ModelVarBase and ModelVar<State>: the light variables of a universe, with their state tags.
#ifndef VESK_MODEL_VAR_H
#define VESK_MODEL_VAR_H

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
struct bpm_prot_state { static constexpr int card = 2; };
struct bpm_mrna_state { static constexpr int card = 2; };
struct bpm_complex_state { static constexpr int card = 2; };
struct bpm_event_state { static constexpr int card = 2; };
struct bpm_stimu_state { static constexpr int card = 2; };
struct bpm_gene_state { static constexpr int card = 3; };
struct bpm_tf_state { static constexpr int card = 3; };

template <class State>
class ModelVar : public ModelVarBase {
public:
    ModelVar() { m_state_card = State::card; }
    explicit ModelVar(int id) : ModelVar() { m_id = id; }
    int get_state_card() const override { return State::card; }
};

#endif
