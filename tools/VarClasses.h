// VarClasses: class membership table read from a class key table and an association table.
#ifndef VESK_TOOLS_VARCLASSES_H
#define VESK_TOOLS_VARCLASSES_H

#include "ds/BitVec.h"

#include <istream>
#include <map>
#include <string>
#include <vector>

class VarClasses {
public:
    // Opens both files, then reads them; false (with a message) if either cannot be opened,
    // in which case nothing is read. The key file is tried first.
    bool read(const std::string& key_path, const std::string& assoc_path, int n_vars, const ds_bitvec* mask);
    // Reads the key rows, then the membership rows; a membership is taken only for
    // variables in `mask` (all of them when `mask` is null).
    void read(std::istream& key_in, std::istream& assoc_in, int n_vars, const ds_bitvec* mask);

    int class_count() const { return static_cast<int>(m_class_bits.size()); }

    std::vector<ds_bitvec> m_class_bits;
    std::vector<std::string> m_class_names;
    std::vector<std::string> m_class_keys;
    std::map<std::string, int> m_key_to_class;
    std::vector<std::vector<int>> m_var_classes;
};

#endif
