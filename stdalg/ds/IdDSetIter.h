// IdDSetIter: walks the subsets of k candidate ids, forced ids first, with hooks on every change.
#ifndef VESK_STDALG_DS_IDDSETITER_H
#define VESK_STDALG_DS_IDDSETITER_H

#include "ds/BitVec.h"

#include <vector>

// The walking order is the forced ids, then the choice ids, then the other allowed ids ascending.
// Forced ids hold their positions; the position after them, when there are choice ids, takes only
// its first two entries, whatever the number of choice ids. Subsets come in lexicographic order of
// the walking order, and the hooks see every change of a position once: a subclass keeps a
// structure in step with the current subset.
class IdDSetIter {
public:
    explicit IdDSetIter(int k);
    virtual ~IdDSetIter();

    void restart(const ds_bitvec& allowed, const std::vector<int>& forced, const std::vector<int>& choice);
    // The first subset; invalid when there are fewer candidates than k.
    virtual void first();
    // The next subset; false, with every position removed, when the walk is over.
    virtual bool operator++();
    virtual void on_remove_from_set(int position, int id);
    virtual void on_add_to_set(int position, int id);

    bool valid() const { return m_valid; }
    int k() const { return m_k; }
    // The id at `position` of the current subset.
    int id_at(int position) const { return *m_cur[position]; }

    int m_k;
    bool m_valid;
    std::vector<int> m_ids;
    std::vector<const int*> m_cur;
    std::vector<const int*> m_ends;
    // Allowed ids not taken as forced or choice ids.
    ds_bitvec m_free;

protected:
    bool forward(int j);

private:
    // False after a restart with too few positions for the forced and choice ids.
    bool m_ready;
};

#endif
