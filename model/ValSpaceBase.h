// ValSpaceBase: maps a real value to a discrete state and to state probabilities.
#ifndef VESK_MODEL_VALSPACEBASE_H
#define VESK_MODEL_VALSPACEBASE_H

class ValSpaceBase {
public:
    virtual ~ValSpaceBase() {}
    virtual int get_zero_state() const { return 0; }
    virtual float get_val_state_prob(int state, float value) const = 0;
    virtual int get_state_of_val(float value) const = 0;

    int m_states = 0;
};

#endif
