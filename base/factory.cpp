// lookup() and the Factory table walk.
#include "factory.h"

#include "error.h"

#include <cstring>

static constexpr char kSrc[] = "factory";

int lookup(const char* name, const char* const* names, int count, bool required) {
    if (count == -1) {
        for (int i = 0; names[i]; ++i)
            if (std::strcmp(names[i], name) == 0)
                return i;
    } else {
        for (int i = 0; i < count; ++i)
            if (std::strcmp(names[i], name) == 0)
                return i;
    }
    if (required)
        VESK_FATAL(kSrc, "Didn't Find entry for " << name);
    return count;
}

Factory::Factory(const char* const* names, const void* funcs, int count, const Factory* parent)
    : m_names(names), m_funcs(funcs), m_count(count), m_total(count + (parent ? parent->m_total : 0)),
      m_parent(parent) {}

int Factory::product(const char* name, bool required) const {
    if (!m_parent)
        return lookup(name, m_names, -1, required);
    int own = lookup(name, m_names, -1, false);
    if (own != -1)
        return own;
    return m_parent->product(name, required) + m_count;
}

const char* Factory::name(int index) const {
    int local = index;
    const Factory* t = table_of(local);
    return t->m_names[local];
}

bool Factory::obsolete(int index) const { return product(name(index), true) != index; }

const Factory* Factory::table_of(int& index) const {
    const Factory* t = this;
    while (index >= t->m_count && t->m_parent) {
        index -= t->m_count;
        t = t->m_parent;
    }
    return t;
}
