// VarIdSpace: the tab-table reader and the default space.
#include "VarIdSpace.h"

#include "error.h"
#include "idbound.h"
#include "strutil.h"

#include <cstdio>
#include <iostream>

static constexpr char kSrc[] = "VarIdSpace";

VarIdSpace::VarIdSpace() = default;

void VarIdSpace::grow_to(int id) {
    if (id < static_cast<int>(m_names.size()))
        return;
    m_names.resize(id + 1);
    m_descs.resize(id + 1);
    m_attrs.resize(id + 1);
}

int VarIdSpace::id_of_name(const std::string& name) const {
    auto it = m_name_to_id.find(name);
    return it == m_name_to_id.end() ? -1 : it->second;
}

int VarIdSpace::id_of_attr_value(const std::string& value) const {
    auto it = m_attr_value_to_id.find(value);
    return it == m_attr_value_to_id.end() ? -1 : it->second;
}

void VarIdSpace::read_tab(std::istream& is) {
    int id = 0;
    is >> id;
    // Every line of the table lands on this one id, which sizes the name tables.
    if (is && !input_id_ok(id))
        VESK_FATAL(kSrc, "Bad var id " << id << " in var id space table");
    std::vector<std::string> fields;
    // Until the stream is spent: a table of only the id ends at its end of file without having failed,
    // and split_line reads nothing more from it.
    while (is.good()) {
        split_line(is, fields, '\t');
        if (fields.empty())
            continue;
        const int n = static_cast<int>(fields.size());
        std::cerr << "line fields " << n << std::endl;
        if (n < 3)
            VESK_FATAL(kSrc, "Field number "
                                 << n
                                 << " is too small (at least 3 fields are required) in reading var "
                                    "id space table");
        grow_to(id);
        m_names[id] = fields[1];
        m_descs[id] = fields[2];
        m_name_to_id[fields[1]] = id;
        m_ids[id] = id;
        for (int i = 3; i < n; i += 2) {
            // A trailing key without its value gets an empty one.
            const std::string value = i + 1 < n ? fields[i + 1] : std::string();
            m_attr_value_to_id[value] = id;
            m_attrs[id].push_back(std::make_pair(fields[i], value));
        }
    }
}

void VarIdSpace::init_idspace(int n) {
    grow_to(n);
    for (int i = 0; i < n; ++i) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "Gene%d", i);
        m_names[i] = buf;
        m_descs[i] = buf;
        m_ids[i] = i;
    }
}
