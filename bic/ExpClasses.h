// ExpClasses: a small table of condition classes; a condition belongs to at most one class.
#ifndef VESK_BIC_EXPCLASSES_H
#define VESK_BIC_EXPCLASSES_H

#include "ds/BitVec.h"

#include <istream>
#include <string>
#include <vector>

class ExpClasses {
public:
    // `key`: lines of class id and name. `assoc`: lines of three ints, an ignored one, the class and
    // the condition; a later line wins for a condition. `exp_count` sizes the tables.
    ExpClasses(std::istream& key, std::istream& assoc, int exp_count);

    // The class of a condition, -1 for none (and for a condition past the table).
    int class_of(int exp_id) const {
        return exp_id >= 0 && exp_id < static_cast<int>(m_exp_class.size()) ? m_exp_class[exp_id] : -1;
    }

    std::vector<ds_bitvec> m_class_exps; // by class: its conditions
    std::vector<int> m_exp_class;        // by condition: its class, -1 if none
    std::vector<std::string> m_class_names;
};

#endif
