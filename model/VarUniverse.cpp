// VarUniverse readers.
#include "VarUniverse.h"

#include "error.h"

#include <iostream>

static constexpr char kSrc[] = "VarUniverse";

void VarUniverse::read_short_tabs(std::istream& in) {
    int max_id = -1;
    int id;
    std::string name, short_name;
    // A bad token (or a negative id, which names no slot) ends the read quietly.
    while (in >> id && id >= 0) {
        if (!(in >> name >> short_name))
            break;
        if (id > max_id)
            max_id = id;
        if (id >= static_cast<int>(m_vars.size())) {
            m_vars.resize(id + 1, nullptr);
            if (static_cast<int>(m_short_names.size()) < id + 1)
                m_short_names.resize(id + 1);
        }
        // A repeated id replaces (and leaks) the earlier variable.
        ModelVarBase* var = new ModelVar<bpm_gene_state>(id);
        m_vars[id] = var;
        var->m_name = name;
        m_short_names[id] = short_name;
        m_name_to_id[name] = id;
        m_short_to_id[short_name] = id;
        if (var->m_id != id)
            VESK_FATAL(kSrc, "vars id " << var->m_id << " differs from " << id);
    }
    m_vars.resize(max_id + 1);
    std::cerr << "max id is " << max_id << std::endl;
    std::cerr << "finish reading all objects\n";
}
