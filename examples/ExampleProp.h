// The layered property graph of the property programs: expression conditions, PSSM hits on promoters
// and annotation classes, weighed by layer, all from the option file.
#ifndef VESK_EXAMPLES_EXAMPLEPROP_H
#define VESK_EXAMPLES_EXAMPLEPROP_H

#include "ArrayVarEC.h"
#include "DnaSeqGenomePromoters.h"
#include "ExampleExpr.h"
#include "PropVarGraphBase.h"
#include "PropVarLayers.h"
#include "PropWgtScheme.h"
#include "PssmSet.h"
#include "StateDataSetReal.h"
#include "ValSpaceProb.h"
#include "VarClasses.h"
#include "VarUniverse.h"
#include "options.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <string>

// Layer 0 the conditions of Tables::GeneTab, ExpKey, ExpData (scopes ValSpace, ExpLayer); layer 1,
// with Tables::Promoters, the PSSMs of Tables::pssm_key, pssm_data, pssm_max_range on promoters of
// PromoterLength (scope PssmLayer); layer 2, with Tables::goclskey, the classes of clsassoc (scope
// AnnotLayer). The graph in scope Layers, the weights in scope Weights. Members live as long as the
// object, which must not move.
struct PropGraphInput {
    explicit PropGraphInput(options& opts)
        : space(opts, "ValSpace", false), universe(&space), data(universe) {}
    PropGraphInput(const PropGraphInput&) = delete;
    PropGraphInput& operator=(const PropGraphInput&) = delete;

    // Reads the tables and builds the graph and its weights; false (having said which) when a table
    // can't be opened. Prints the numbers of genes, conditions, property nodes and edges.
    bool build(options& opts) {
        if (!read_expression(opts, universe, data))
            return false;
        std::cout << universe.size() << " genes, " << data.m_E << " conditions" << std::endl;
        graph.reset(new PropVarGraphLayers(universe, opts, "Layers"));
        graph->m_layers.assign(3, nullptr);
        exp_layer.reset(new PropVarLayerACO(data, opts, "ExpLayer"));
        graph->m_layers[0] = exp_layer.get();
        if (opts.has_option("Tables", "Promoters")) {
            std::ifstream fasta;
            if (!open_in(fasta, opts.get_str("Tables", "Promoters", true)))
                return false;
            promoters.read_fasta(opts.get_int("Tables", "PromoterLength", true), universe, fasta, false,
                                 false);
            pssms.reset(new PssmSet);
            pssms->read(opts.get_str("Tables", "pssm_key", true), opts.get_str("Tables", "pssm_data", true),
                        opts.get_int("Tables", "pssm_max_range", true), 0, 0.025f, false);
            pssm_layer.reset(new PropVarLayerPSSM(*pssms, promoters, opts, "PssmLayer"));
            graph->m_layers[1] = pssm_layer.get();
        }
        if (opts.has_option("Tables", "goclskey")) {
            classes.reset(new VarClasses);
            if (!classes->read(opts.get_str("Tables", "goclskey", true),
                               opts.get_str("Tables", "clsassoc", true), universe.size(), nullptr))
                return false;
            annot_layer.reset(new PropVarLayerAnnot(*classes, opts, "AnnotLayer"));
            graph->m_layers[2] = annot_layer.get();
        }
        graph->build_layers();
        ec.reset(new ArrayVarEC(data));
        wgt.reset(new PropWgtSchemeGroupIndeg(*graph, *ec, opts, "Weights", true));
        std::cout << graph->m_max_prop_node << " property nodes, " << graph->edges_num() << " edges"
                  << std::endl;
        return true;
    }

    // Name of a property node: the condition name, the PSSM consensus or the class name.
    std::string prop_name(int node) const {
        const int id = graph->node_prop(node);
        switch (graph->node_layer(node)) {
        case 0:
            return id < static_cast<int>(data.m_e_names.size()) ? data.m_e_names[id] : "";
        case 1:
            return pssms ? pssms->m_consensus[id] : "";
        default:
            return classes ? classes->m_class_names[id] : "";
        }
    }

    ValSpaceProb space;
    VarUniverse universe;
    StateDataSetReal data;
    std::unique_ptr<PropVarGraphLayers> graph;
    std::unique_ptr<PropVarLayerACO> exp_layer;
    std::unique_ptr<PssmSet> pssms;
    DnaSeqGenomePromoters<DnaSequence> promoters;
    std::unique_ptr<PropVarLayerPSSM> pssm_layer;
    std::unique_ptr<VarClasses> classes;
    std::unique_ptr<PropVarLayerAnnot> annot_layer;
    std::unique_ptr<ArrayVarEC> ec;
    std::unique_ptr<PropWgtSchemeGroupIndeg> wgt;
};

#endif
