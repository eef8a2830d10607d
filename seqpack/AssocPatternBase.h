// AssocPatternBase<P>: a pattern and the set of genes whose promoters match it, with an event for
// every change of that set; the interface through which a motif search edits its pattern.
#ifndef VESK_SEQPACK_ASSOCPATTERNBASE_H
#define VESK_SEQPACK_ASSOCPATTERNBASE_H

#include "DnaSeqChar.h"
#include "dispatch.h"
#include "ds/BitVec.h"

// Events of get_dispatch(), m_cur_oper_gene naming the gene where one is meant: 0 a gene joined the
// set, 1 a gene left it, 3 revert finished (no gene events: a listener resynchronises), 4 remember
// finished, 5 match is about to set a new pattern.
template <class P> class AssocPatternBase {
public:
    enum { kGeneAdded = 0, kGeneRemoved = 1, kReverted = 3, kRemembered = 4, kReset = 5 };

    AssocPatternBase() : m_dispatch(6), m_cur_oper_gene(-1) {}
    virtual ~AssocPatternBase() {}

    // A new pattern (text, window and mismatches), all genes matched afresh.
    virtual bool match(const P& pat) = 0;
    // Position `pos` becomes the set `c`: widened first, then narrowed.
    virtual void change_char(int pos, DnaSeqDegChar c) = 0;
    virtual void push_back(DnaSeqDegChar c) = 0;
    virtual void push_front(DnaSeqDegChar c) = 0;
    // Removes (reduce) or adds (extend) the bases of `c` at `pos`.
    virtual void reduce_char(int pos, DnaSeqDegChar c) = 0;
    virtual void extend_char(int pos, DnaSeqDegChar c) = 0;
    virtual void del_back() = 0;
    virtual void del_front() = 0;
    virtual void change_to_range(int to) = 0;
    virtual void change_from_range(int from) = 0;
    virtual void revert() = 0;
    virtual void remember() = 0;

    const P& get_pattern() const { return m_pattern; }
    const event_dispatch& get_dispatch() const { return m_dispatch; }
    const ds_bitvec& get_genes() const { return m_genes; }
    int get_cur_oper_gene() const { return m_cur_oper_gene; }

protected:
    event_dispatch m_dispatch;
    P m_pattern;
    ds_bitvec m_genes;
    ds_bitvec m_remembered_genes;
    P m_remembered_pattern;
    int m_cur_oper_gene;
};

#endif
