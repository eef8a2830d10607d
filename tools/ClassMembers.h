// ClassMembers: the class table as sorted member lists, the fast path's form of VarClasses.
#ifndef VESK_TOOLS_CLASSMEMBERS_H
#define VESK_TOOLS_CLASSMEMBERS_H

#include <istream>
#include <string>
#include <vector>

class VarClasses;
class ds_bitvec;

// The classes of a VarClasses without a bit vector of the universe's width per class: per class its
// name, key and members (ascending, each once). Reading takes the same rows, prints the same trace
// lines and stops on the same fatal errors as VarClasses::read, so either form gives the same run.
class ClassMembers {
public:
    bool read(const std::string& key_path, const std::string& assoc_path, int n_vars, const ds_bitvec* mask);
    void read(std::istream& key_in, std::istream& assoc_in, int n_vars, const ds_bitvec* mask);
    // The classes of a table already read.
    void assign(const VarClasses& classes);

    int class_count() const { return static_cast<int>(m_members.size()); }
    int size(int c) const { return static_cast<int>(m_members[c].size()); }
    bool holds(int c, int v) const;

    std::vector<std::vector<int>> m_members;
    std::vector<std::string> m_class_names;
    std::vector<std::string> m_class_keys;
};

#endif
