// bpm_mrna, bpm_gene, bpm_tf: pathway variables that may name the gene they come from.
#ifndef VESK_MODEL_MRNA_H
#define VESK_MODEL_MRNA_H

#include "var.h"

#include <cstdlib>
#include <string>

// Keeps the gene id given by the attribute "gene_id"; other attributes are ignored.
template <class State> class bpm_gene_linked : public bpm_var<State> {
public:
    bpm_gene_linked(bpm_system* system, int id) : bpm_var<State>(system, id) {}

    void set_attr(const std::string& name, const std::string& value, const std::string&,
                  const std::string&) override {
        if (name == "gene_id")
            m_gene_id = std::atoi(value.c_str());
    }

    int m_gene_id = -1;
};

class bpm_mrna : public bpm_gene_linked<bpm_mrna_state> {
public:
    bpm_mrna(bpm_system* system, int id) : bpm_gene_linked(system, id) {}
    bpm_basevar* clone(bpm_system* system) const override;
};

class bpm_gene : public bpm_gene_linked<bpm_gene_state> {
public:
    bpm_gene(bpm_system* system, int id) : bpm_gene_linked(system, id) {}
    bpm_basevar* clone(bpm_system* system) const override;
};

class bpm_tf : public bpm_gene_linked<bpm_tf_state> {
public:
    bpm_tf(bpm_system* system, int id) : bpm_gene_linked(system, id) {}
    bpm_basevar* clone(bpm_system* system) const override;
};

#endif
