// DsetAssign: the lattice of row sets, one per partial assignment of a base variable and its parents.
#ifndef VESK_STDALG_DS_DSETASSIGN_H
#define VESK_STDALG_DS_DSETASSIGN_H

#include "ds/BitVec.h"
#include "ds/MultiDimIdSpace.h"

#include <memory>
#include <ostream>
#include <vector>

// Entry v: the rows in which a variable takes the value v; a null entry means no row.
typedef std::vector<const ds_bitvec*> DsetValueSets;

// Slot 0 holds the base variable, slots 1.. its parents; slot i is digit i of the id space. The set
// of an id holds the rows that match every fixed digit of it. A null set and an empty set both mean
// no rows. Sets of ids that involve a freed slot are left as they are: nothing reads them until an
// insertion into that slot rewrites them.
class DsetAssign {
public:
    // Prints "DsetAssign default construction" on the error stream.
    DsetAssign();
    DsetAssign(const MultiDimIdSpace& space, int values, int slots, int rows, bool verbose);
    DsetAssign(const DsetAssign&) = delete;
    DsetAssign& operator=(const DsetAssign&) = delete;

    // Puts `var` in slot 0, first removing a variable that is there.
    void insert_base_var(int var, const DsetValueSets& value_sets);
    // Puts `var` in the first free slot from 1 and returns it; -1 when every slot is taken, in
    // which case nothing changes.
    int insert_var(int var, const DsetValueSets& value_sets);
    // Records `var` in `slot` and rewrites the sets of every id whose digit at `slot` is set and
    // whose other digits belong to filled slots. A slot outside the space changes nothing.
    void insert_var_at(int var, const DsetValueSets& value_sets, int slot);
    // Frees `slot`; a free slot is fatal.
    void remove_i_var(int slot);
    // Frees the slot of `var`, looking from slot 1; a miss is fatal.
    void remove_var(int var);
    void remove_base_var() { remove_i_var(0); }
    void clear();

    // The rows of `id`, or null.
    const ds_bitvec* set_of(int id) const { return m_sets[id].get(); }
    // Row count of `id`: 0 for a null set.
    int count_of(int id) const { return m_sets[id] ? m_sets[id]->on_bits() : 0; }

    // Per filled slot, the row counts of the single-digit ids of that slot.
    void dump_state(std::ostream& out) const;
    // Checks the all-rows set, the slot bookkeeping and the set widths; says why on the error stream.
    bool verify() const;

    const MultiDimIdSpace* m_space;
    int m_slots;
    int m_values;
    int m_rows;
    ds_bitvec m_tmp;
    std::vector<std::unique_ptr<ds_bitvec>> m_sets;
    std::vector<int> m_vars;
    unsigned int m_active;
    int m_count;
    bool m_verbose;
};

#endif
