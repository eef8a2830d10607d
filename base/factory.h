// Factory tables: from a product name to a maker function of a class family, with parent tables.
#ifndef VESK_BASE_FACTORY_H
#define VESK_BASE_FACTORY_H

// First index in `names` whose string equals `name`. `count` -1 scans up to the null pointer
// that ends the table, a positive count scans that many entries, any other count scans none.
// A miss is fatal when `required`, else the result is `count`.
int lookup(const char* name, const char* const* names, int count, bool required);

class Factory {
public:
    Factory(const char* const* names, const void* funcs, int count, const Factory* parent);

    // Index of `name`: own entries first, then the parent's shifted by m_count.
    int product(const char* name, bool required) const;
    // The name at `index`, through the parents.
    const char* name(int index) const;
    // True if `index` is not the index product() gives for its name (a later duplicate row).
    bool obsolete(int index) const;

    const char* const* m_names;
    const void* m_funcs;
    int m_count;
    int m_total;
    const Factory* m_parent;

protected:
    // The table that holds `index`; `index` becomes the index within that table.
    const Factory* table_of(int& index) const;
};

template <class Base, class A1> class Factory1 : public Factory {
public:
    typedef Base* (*maker_type)(A1);

    Factory1(const char* const* names, const maker_type* funcs, int count, const Factory* parent)
        : Factory(names, funcs, count, parent) {}

    Base* make(const char* name, A1 a1) const {
        int index = product(name, true);
        const Factory* t = table_of(index);
        return static_cast<const maker_type*>(t->m_funcs)[index](a1);
    }
};

template <class Base, class A1, class A2> class Factory2 : public Factory {
public:
    typedef Base* (*maker_type)(A1, A2);

    Factory2(const char* const* names, const maker_type* funcs, int count, const Factory* parent)
        : Factory(names, funcs, count, parent) {}

    Base* make(const char* name, A1 a1, A2 a2) const {
        int index = product(name, true);
        const Factory* t = table_of(index);
        return static_cast<const maker_type*>(t->m_funcs)[index](a1, a2);
    }
};

template <class Base, class Derived, class A1> struct Factory1Make {
    static Base* func(A1 a1) { return new Derived(a1); }
};

template <class Base, class Derived, class A1, class A2> struct Factory2Make {
    static Base* func(A1 a1, A2 a2) { return new Derived(a1, a2); }
};

#endif
