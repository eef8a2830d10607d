// VarClasses readers.
#include "VarClasses.h"

#include "error.h"
#include "idbound.h"

#include <fstream>
#include <iostream>

static constexpr char kSrc[] = "vesk";

bool VarClasses::read(const std::string& key_path, const std::string& assoc_path, int n_vars,
                      const ds_bitvec* mask) {
    std::ifstream key_in(key_path.c_str());
    if (!key_in) {
        std::cerr << "Cannot open annok file " << key_path << std::endl;
        return false;
    }
    std::ifstream assoc_in(assoc_path.c_str());
    if (!assoc_in) {
        std::cerr << "Cannot open annod file " << assoc_path << std::endl;
        return false;
    }
    read(key_in, assoc_in, n_vars, mask);
    return true;
}

void VarClasses::read(std::istream& key_in, std::istream& assoc_in, int n_vars, const ds_bitvec* mask) {
    m_var_classes.assign(n_vars > 0 ? n_vars : 0, std::vector<int>());

    // Key rows: an int, then three fields up to a tab (what stands between the number and
    // the first tab, the key, the name), then an int that is read and ignored.
    // A class holds a bit vector of the universe's width: the ids are bounded so that all of them
    // together stay within the cell ceiling.
    const long long id_limit = input_id_limit(n_vars / 32 + 1);
    int id;
    int row = 0;
    while (key_in >> id) {
        ++row;
        std::string lead, key, name;
        std::getline(key_in, lead, '\t');
        std::getline(key_in, key, '\t');
        std::getline(key_in, name, '\t');
        int ignored;
        key_in >> ignored;
        if (!input_id_ok(id, id_limit))
            VESK_FATAL(kSrc, "Bad class id " << id << " in key row " << row);
        if (id >= static_cast<int>(m_class_bits.size())) {
            m_class_bits.resize(id + 1, ds_bitvec(n_vars));
            m_class_names.resize(id + 1);
            m_class_keys.resize(id + 1);
        }
        m_class_names[id] = name;
        m_class_keys[id] = key;
        m_key_to_class[key] = id;
    }
    std::cerr << "max class id " << m_class_bits.size() << std::endl;

    int cls, var;
    while (assoc_in >> cls >> var) {
        if (cls < 0 || cls >= static_cast<int>(m_class_bits.size())) {
            std::cerr << "Class " << cls << " size " << m_class_bits.size() << std::endl;
            VESK_FATAL(kSrc, "Table id mismatch");
        }
        if (mask) {
            if (!mask->get_ind(var))
                continue;
        } else if (var < 0 || var >= n_vars) {
            continue; // without a mask, a variable outside the universe has nowhere to go
        }
        m_class_bits[cls].set_ind(var);
        m_var_classes[var].push_back(cls);
    }
    std::cerr << "out of here\n";
}
