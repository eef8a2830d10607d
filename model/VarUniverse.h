// VarUniverse: the dense id space of variables and the maps from their names to ids.
#ifndef VESK_VARUNIVERSE_H
#define VESK_VARUNIVERSE_H

#include "var.h"

#include <istream>
#include <map>
#include <string>
#include <vector>

class ValSpaceBase;

class VarUniverse {
public:
    explicit VarUniverse(ValSpaceBase* val_space = nullptr) : m_val_space(val_space) {}

    // Reads the short gene table: rows of int id, name, short name.
    void read_short_tabs(std::istream& in);

    int size() const { return static_cast<int>(m_vars.size()); }

    // Map lookups; -1 for a missing name.
    static int find(const std::map<std::string, int>& m, const std::string& name) {
        auto it = m.find(name);
        return it == m.end() ? -1 : it->second;
    }

    std::vector<ModelVarBase*> m_vars;
    std::vector<std::string> m_short_names;
    std::map<std::string, int> m_name_to_id;
    std::map<std::string, int> m_short_to_id;
    std::map<std::string, int> m_alias_to_id;
    ValSpaceBase* m_val_space;
};

#endif
