// VarUniverse: the dense id space of variables and the maps from their names to ids.
#ifndef VESK_MODEL_VARUNIVERSE_H
#define VESK_MODEL_VARUNIVERSE_H

#include "var.h"

#include <istream>
#include <map>
#include <string>
#include <vector>

class ValSpaceBase;

class VarUniverse {
public:
    explicit VarUniverse(ValSpaceBase* val_space = nullptr) : m_val_space(val_space) {}
    // The universe owns its variables.
    ~VarUniverse();
    VarUniverse(const VarUniverse&) = delete;
    VarUniverse& operator=(const VarUniverse&) = delete;

    // Reads the short gene table: rows of int id, name, short name.
    void read_short_tabs(std::istream& in);
    // Reads the long object table: id, name, kind, two ignored words, short name, alias, and
    // further tab-separated aliases after a tab. `unused` is not read.
    void read_tabs(std::istream& objects, std::istream& unused);
    // Makes `n` anonymous genes named "Gene<id>", entered in the map of printed names.
    void init_idspace(int n);
    // The name of the kind of variable `id`; empty for an id without a variable.
    const char* get_var_type_name(int id) const;

    int size() const { return static_cast<int>(m_vars.size()); }

    // Map lookups; -1 for a missing name.
    static int find(const std::map<std::string, int>& m, const std::string& name) {
        auto it = m.find(name);
        return it == m.end() ? -1 : it->second;
    }

    // Fatal "vars id <var id> differs from <id>" when a freshly made variable carries another id
    // than the row that asked for it.
    static void check_var_id(int var_id, int id);
    // A row id of the variable tables: 0 ... kMaxInputId - 1, else fatal naming the id and row.
    static void check_row_id(int id, int row);

    std::vector<ModelVarBase*> m_vars;
    std::vector<std::string> m_short_names;
    std::map<std::string, int> m_name_to_id;
    std::map<std::string, int> m_short_to_id;
    std::map<std::string, int> m_alias_to_id;
    ValSpaceBase* m_val_space;

private:
    // Grows m_vars to hold `id` and puts a new variable of `kind` there, replacing an earlier one.
    ModelVarBase* make_var(const char* kind, int id);
    void finish_read(int max_id);
};

#endif
