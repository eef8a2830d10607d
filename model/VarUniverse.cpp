// VarUniverse readers: the short gene table, the long object table with kinds and aliases, anonymous ids.
#include "VarUniverse.h"

#include "ModelVarFact.h"
#include "error.h"
#include "idbound.h"
#include "strutil.h"

#include <iostream>

static constexpr char kSrc[] = "VarUniverse";

VarUniverse::~VarUniverse() {
    for (ModelVarBase* var : m_vars)
        delete var;
}

void VarUniverse::check_var_id(int var_id, int id) {
    if (var_id != id)
        VESK_FATAL(kSrc, "vars id " << var_id << " differs from " << id);
}

void VarUniverse::check_row_id(int id, int row) {
    if (!input_id_ok(id))
        VESK_FATAL(kSrc, "Bad var id " << id << " in row " << row);
}

ModelVarBase* VarUniverse::make_var(const char* kind, int id) {
    const Factory1<ModelVarBase, int>& gen = model_var_gen();
    ModelVarBase* var = gen.make(kind, id);
    var->m_kind = gen.product(kind, true);
    if (id >= static_cast<int>(m_vars.size()))
        m_vars.resize(id + 1, nullptr);
    // A repeated id replaces the earlier variable; the earlier one is freed rather than leaked.
    delete m_vars[id];
    m_vars[id] = var;
    return var;
}

void VarUniverse::finish_read(int max_id) {
    m_vars.resize(max_id + 1);
    std::cerr << "max id is " << max_id << std::endl;
    std::cerr << "finish reading all objects\n";
}

void VarUniverse::read_short_tabs(std::istream& in) {
    int max_id = -1;
    int id;
    int row = 0;
    std::string name, short_name;
    // A bad token ends the read quietly; an id that can name no slot is fatal.
    while (in >> id) {
        check_row_id(id, ++row);
        if (!(in >> name >> short_name))
            break;
        if (id > max_id)
            max_id = id;
        ModelVarBase* var = make_var("gene", id);
        var->m_name = name;
        if (static_cast<int>(m_short_names.size()) < id + 1)
            m_short_names.resize(id + 1);
        m_short_names[id] = short_name;
        m_name_to_id[name] = id;
        m_short_to_id[short_name] = id;
        check_var_id(var->m_id, id);
    }
    finish_read(max_id);
}

void VarUniverse::read_tabs(std::istream& in, std::istream&) {
    int max_id = -1;
    int id;
    int row = 0;
    std::string name, kind, ignored1, ignored2, short_name, alias;
    std::vector<std::string> more_aliases;
    while (in >> id) {
        check_row_id(id, ++row);
        if (!(in >> name >> kind >> ignored1 >> ignored2 >> short_name >> alias))
            break;
        if (id > max_id)
            max_id = id;
        ModelVarBase* var = make_var(kind.c_str(), id);
        var->m_name = name;
        if (static_cast<int>(m_short_names.size()) < id + 1)
            m_short_names.resize(id + 1);
        m_short_names[id] = short_name;
        m_name_to_id[name] = id;
        m_short_to_id[short_name] = id;
        m_alias_to_id[alias] = id;
        // The rest of the row: anything before the first tab is dropped; after a tab come
        // tab-separated aliases up to the line end.
        int c = in.get();
        while (c != '\t' && c != '\n' && c != std::char_traits<char>::eof())
            c = in.get();
        if (c == '\t') {
            split_line(in, more_aliases, '\t');
            for (const std::string& a : more_aliases)
                m_alias_to_id[a] = id;
        }
        check_var_id(var->m_id, id);
    }
    finish_read(max_id);
}

void VarUniverse::init_idspace(int n) {
    for (ModelVarBase* var : m_vars)
        delete var;
    m_vars.assign(n, nullptr);
    for (int id = 0; id < n; ++id) {
        ModelVarBase* var = make_var("gene", id);
        var->m_name = "Gene" + std::to_string(id);
        m_short_to_id[var->m_name] = id;
    }
}

const char* VarUniverse::get_var_type_name(int id) const {
    if (id < 0 || id >= size() || !m_vars[id])
        return "";
    const Factory& gen = model_var_gen();
    const int kind = m_vars[id]->m_kind;
    if (kind < 0 || kind >= gen.m_total)
        return "";
    return gen.name(kind);
}
