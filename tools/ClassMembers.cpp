// ClassMembers readers and look-up.
#include "ClassMembers.h"

#include "VarClasses.h"
#include "ds/BitVecIter.h"
#include "error.h"
#include "idbound.h"

#include <algorithm>
#include <fstream>
#include <iostream>

static constexpr char kSrc[] = "vesk";

bool ClassMembers::read(const std::string& key_path, const std::string& assoc_path, int n_vars,
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

// The rows as VarClasses::read takes them; members are collected, then sorted and made unique.
void ClassMembers::read(std::istream& key_in, std::istream& assoc_in, int n_vars, const ds_bitvec* mask) {
    // The same id bound as VarClasses, so that both readers accept and refuse the same tables.
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
        if (id >= class_count()) {
            m_members.resize(id + 1);
            m_class_names.resize(id + 1);
            m_class_keys.resize(id + 1);
        }
        m_class_names[id] = name;
        m_class_keys[id] = key;
    }
    std::cerr << "max class id " << m_members.size() << std::endl;

    int cls, var;
    while (assoc_in >> cls >> var) {
        if (cls < 0 || cls >= class_count()) {
            std::cerr << "Class " << cls << " size " << m_members.size() << std::endl;
            VESK_FATAL(kSrc, "Table id mismatch");
        }
        if (mask) {
            if (!mask->get_ind(var))
                continue;
        } else if (var < 0 || var >= n_vars) {
            continue;
        }
        m_members[cls].push_back(var);
    }
    for (std::vector<int>& m : m_members) {
        std::sort(m.begin(), m.end());
        m.erase(std::unique(m.begin(), m.end()), m.end());
        m.shrink_to_fit();
    }
    std::cerr << "out of here\n";
}

void ClassMembers::assign(const VarClasses& classes) {
    m_class_names = classes.m_class_names;
    m_class_keys = classes.m_class_keys;
    m_members.assign(classes.class_count(), std::vector<int>());
    for (int c = 0; c < classes.class_count(); ++c)
        for (ds_bitvec_iter it(classes.m_class_bits[c]); it; ++it)
            m_members[c].push_back(it);
}

bool ClassMembers::holds(int c, int v) const {
    return std::binary_search(m_members[c].begin(), m_members[c].end(), v);
}
