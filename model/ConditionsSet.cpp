// ConditionsSet reader.
#include "ConditionsSet.h"

#include "error.h"
#include "idbound.h"
#include "strutil.h"

#include <cstdlib>
#include <iostream>
#include <limits>

static constexpr char kSrc[] = "ConditionsSet";

void ConditionsSet::read(std::istream& key, std::istream& attrs) {
    std::cerr << "will read log set" << std::endl;
    int id;
    std::string name;
    int row = 0;
    while (key >> id >> name) {
        ++row;
        key.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        if (id < 0)
            continue;
        if (!input_id_ok(id))
            VESK_FATAL(kSrc, "Bad cond id " << id << " in key row " << row);
        if (id >= static_cast<int>(m_conds.size()))
            m_conds.resize(id + 1);
        m_conds[id].m_name = name;
    }
    std::vector<std::string> fields;
    while (attrs >> id) {
        attrs.get(); // the separator after the id
        split_line(attrs, fields, '\t');
        if (fields.empty())
            break;
        if (id < 0 || id >= static_cast<int>(m_conds.size())) {
            std::cerr << "unknown cond id " << id << std::endl;
            continue;
        }
        if (fields[0] == "const") {
            const int var = fields.size() > 1 ? std::atoi(fields[1].c_str()) : 0;
            const int val = fields.size() > 2 ? std::atoi(fields[2].c_str()) : 0;
            m_conds[id].m_perturbs.push_back(CondPerturb(var, static_cast<float>(val)));
        } else {
            std::cerr << "unknown cond attr name " << fields[0] << std::endl;
        }
    }
    std::cerr << "done read logattr" << std::endl;
}
