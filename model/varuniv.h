// bpm_varuniv: the variables of a pathway model, read from an object table and an attribute table.
#ifndef VESK_MODEL_VARUNIV_H
#define VESK_MODEL_VARUNIV_H

#include "var.h"

#include <istream>
#include <map>
#include <string>
#include <vector>

class bpm_varuniv {
public:
    bpm_varuniv() {}
    // The universe owns its variables.
    ~bpm_varuniv();
    bpm_varuniv(const bpm_varuniv&) = delete;
    bpm_varuniv& operator=(const bpm_varuniv&) = delete;

    // Object rows: id, name, kind (a name of bpm_basevar_gen), two numbers, a word, the rest dropped.
    // Attribute rows: variable name, attribute name, value and two more words, handed to set_attr.
    void read_tabs(std::istream& objects, std::istream& attributes);
    // The name of the kind of variable `id`; empty for an id without a variable.
    const char* get_var_type_name(int id) const;

    // Fatal "vars id <var id> differs from <id>" when a made variable carries another id than its row.
    static void check_var_id(int var_id, int id);

    std::vector<bpm_basevar*> m_all_vars;
    std::map<std::string, int> m_var_to_id; // names of the object table
    std::map<std::string, int> m_name_to_id;
    std::map<std::string, int> m_short_to_id;
    std::map<std::string, int> m_alias_to_id;
};

#endif
