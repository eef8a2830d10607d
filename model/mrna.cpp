// bpm_mrna, bpm_gene, bpm_tf: copies bound to another system.
#include "mrna.h"

// A copy keeps everything, the rules included, and changes only the system it belongs to.
template <class T> static bpm_basevar* clone_into(const T& var, bpm_system* system) {
    T* copy = new T(var);
    copy->m_system = system;
    return copy;
}

bpm_basevar* bpm_mrna::clone(bpm_system* system) const { return clone_into(*this, system); }
bpm_basevar* bpm_gene::clone(bpm_system* system) const { return clone_into(*this, system); }
bpm_basevar* bpm_tf::clone(bpm_system* system) const { return clone_into(*this, system); }
