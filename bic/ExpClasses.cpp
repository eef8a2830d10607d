// ExpClasses: reading the class key and the condition-to-class table.
#include "ExpClasses.h"

#include "error.h"
#include "idbound.h"

#include <iostream>

static constexpr char kSrc[] = "ExpClasses";

ExpClasses::ExpClasses(std::istream& key, std::istream& assoc, int exp_count)
    : m_exp_class(exp_count > 0 ? static_cast<size_t>(exp_count) : 0, -1) {
    int id;
    std::string name;
    // Each class holds a bit vector over the conditions.
    const long long id_limit = input_id_limit(exp_count / 32 + 1);
    int row = 0;
    while (key >> id >> name) {
        ++row;
        if (id < 0)
            continue;
        if (!input_id_ok(id, id_limit))
            VESK_FATAL(kSrc, "Bad class id " << id << " in key row " << row);
        if (id >= static_cast<int>(m_class_names.size())) {
            m_class_names.resize(id + 1);
            m_class_exps.resize(id + 1, ds_bitvec(exp_count));
        }
        m_class_names[id] = name;
    }
    int ignored, cls, cond;
    while (assoc >> ignored >> cls >> cond) {
        if (cls < 0 || cls >= static_cast<int>(m_class_exps.size()) || cond < 0 || cond >= exp_count) {
            std::cerr << "bad class association " << cls << " " << cond << std::endl;
            continue;
        }
        m_class_exps[cls].set_ind(cond);
        m_exp_class[cond] = cls;
        std::cerr << "annnot " << cond << " with " << cls << std::endl;
    }
    std::cerr << "out of here" << std::endl;
}
