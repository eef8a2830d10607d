// VarIdSpace: names, descriptions and free attributes of variable ids, read from a tab table.
#ifndef VESK_EBN_VARIDSPACE_H
#define VESK_EBN_VARIDSPACE_H

#include <istream>
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

class VarIdSpace {
public:
    VarIdSpace();

    // The stream opens with one id, read once: every following line is entered under that id, a
    // later line overwriting an earlier one's name and description. A line is
    // "<ignored>\t<name>\t<description>[\t<key>\t<value>]..."; fewer than 3 fields are fatal.
    void read_tab(std::istream& is);
    // A default space of n ids named and described "Gene<i>"; the name map stays empty.
    void init_idspace(int n);

    int size() const { return static_cast<int>(m_names.size()); }
    const std::string& get_name(int id) const { return m_names[id]; }
    const std::string& get_desc(int id) const { return m_descs[id]; }
    const std::list<std::pair<std::string, std::string>>& get_attrs(int id) const { return m_attrs[id]; }
    // -1 when absent.
    int id_of_name(const std::string& name) const;
    int id_of_attr_value(const std::string& value) const;
    bool has_id(int id) const { return m_ids.count(id) != 0; }
    int ids_num() const { return static_cast<int>(m_ids.size()); }

private:
    void grow_to(int id);

    std::vector<std::string> m_names;
    std::vector<std::string> m_descs;
    std::vector<std::list<std::pair<std::string, std::string>>> m_attrs;
    std::map<int, int> m_ids;
    std::map<std::string, int> m_name_to_id;
    std::map<std::string, int> m_attr_value_to_id;
};

#endif
