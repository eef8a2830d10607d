// ConditionsSet: named conditions, each with the variables it holds at fixed values.
#ifndef VESK_MODEL_CONDITIONSSET_H
#define VESK_MODEL_CONDITIONSSET_H

#include <istream>
#include <string>
#include <vector>

class CondPerturb {
public:
    CondPerturb(int var = 0, float val = 0.0f) : m_var(var), m_val(val) {}
    int m_var;
    float m_val;
};

class Condition {
public:
    std::string m_name;
    std::vector<CondPerturb> m_perturbs;
};

class ConditionsSet {
public:
    // key: condition id, name, rest of the line ignored. attrs: condition id, one skipped character,
    // then tab-separated fields; the attribute "const" fixes variable (field 2) at value (field 3).
    void read(std::istream& key, std::istream& attrs);

    std::vector<Condition> m_conds;
};

#endif
