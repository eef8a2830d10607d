// bpm_varuniv readers.
#include "varuniv.h"

#include "error.h"
#include "varfact.h"

#include <iostream>

static constexpr char kSrc[] = "varuniv";

bpm_varuniv::~bpm_varuniv() {
    for (bpm_basevar* var : m_all_vars)
        delete var;
}

void bpm_varuniv::check_var_id(int var_id, int id) {
    if (var_id != id)
        VESK_FATAL(kSrc, "vars id " << var_id << " differs from " << id);
}

void bpm_varuniv::read_tabs(std::istream& objects, std::istream& attributes) {
    const Factory2<bpm_basevar, bpm_system*, int>& gen = bpm_basevar_gen();
    int max_id = -1;
    int id;
    float ignored_a, ignored_b;
    std::string name, kind, word;
    while (objects >> id && id >= 0) {
        if (!(objects >> name >> kind >> ignored_a >> ignored_b >> word))
            break;
        int c = objects.get();
        while (c != '\n' && c != std::char_traits<char>::eof())
            c = objects.get();
        std::cerr << "add var " << id << " " << name << " " << kind << std::endl;
        if (id > max_id)
            max_id = id;
        if (id >= static_cast<int>(m_all_vars.size()))
            m_all_vars.resize(id + 1, nullptr);
        bpm_basevar* var = gen.make(kind.c_str(), nullptr, id);
        var->m_kind = gen.product(kind.c_str(), true);
        var->m_name = name;
        // A repeated id replaces the earlier variable.
        delete m_all_vars[id];
        m_all_vars[id] = var;
        m_var_to_id[name] = id;
        check_var_id(var->m_id, id);
    }
    m_all_vars.resize(max_id + 1);
    std::cerr << "max id is " << max_id << std::endl;
    std::cerr << "finish reading all objects\n";

    std::string var_name, attr, value, extra1, extra2;
    while (attributes >> var_name >> attr >> value >> extra1 >> extra2) {
        std::cerr << "attribute " << var_name << " " << attr << std::endl;
        // An unknown name is entered with id 0.
        const int vid = m_var_to_id[var_name];
        std::cerr << "id for var name is " << vid << std::endl;
        bpm_basevar* var = vid < static_cast<int>(m_all_vars.size()) ? m_all_vars[vid] : nullptr;
        std::cerr << "ptr at all_vars is " << static_cast<const void*>(var) << std::endl;
        // A row that reaches no variable (an empty table, a hole at id 0) has nothing to set.
        if (var)
            var->set_attr(attr, value, extra1, extra2);
        var_name.clear();
        attr.clear();
        value.clear();
        extra1.clear();
        extra2.clear();
    }
}

const char* bpm_varuniv::get_var_type_name(int id) const {
    if (id < 0 || id >= static_cast<int>(m_all_vars.size()) || !m_all_vars[id])
        return "";
    const Factory& gen = bpm_basevar_gen();
    const int kind = m_all_vars[id]->m_kind;
    if (kind < 0 || kind >= gen.m_total)
        return "";
    return gen.name(kind);
}
