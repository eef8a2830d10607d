// DsetAssignIter: walks the non-empty full assignments of the parent slots of a DsetAssign;
// DsetAssignIterHide leaves some variables out of the walk.
#ifndef VESK_STDALG_DS_DSETASSIGNITER_H
#define VESK_STDALG_DS_DSETASSIGNITER_H

#include "ds/DsetAssign.h"

#include <vector>

// The position is an id whose digit 0 is 0 and whose other filled digits are all set: the rows of
// that parent combination are set_of(id), those that also give the base variable its value v are
// set_of(id + v + 1). Call restart after the assignment changes, then first.
class DsetAssignIter {
public:
    explicit DsetAssignIter(const DsetAssign& assign);
    virtual ~DsetAssignIter();

    virtual void restart(const DsetAssign& assign);
    // Goes to the first combination; false when there is none.
    bool first();
    // Goes to the next combination; false when the walk is over.
    bool operator++();

    bool valid() const { return m_cur < m_end; }
    int cur() const { return m_cur; }
    const DsetAssign& assign() const { return *m_assign; }

    const DsetAssign* m_assign;
    int m_cur;
    int m_end;
    int m_stride;
    // Digits that the walk keeps at 0: free slots and, in the Hide variant, hidden variables.
    unsigned int m_fixed;

protected:
    void reset_walk(const DsetAssign& assign);
};

class DsetAssignIterHide : public DsetAssignIter {
public:
    DsetAssignIterHide(const DsetAssign& assign, const std::vector<int>& hidden);

    // As the base, with the slots of the hidden variables added to the fixed digits.
    void restart(const DsetAssign& assign) override;

    std::vector<int> m_hidden;

private:
    void hide();
};

#endif
