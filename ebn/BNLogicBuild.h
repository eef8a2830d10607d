// Networks built from a node table, a node-attribute table and a logic set: the plain noisy-logic
// form and the form with one binary consistency node per variable.
#ifndef VESK_EBN_BNLOGICBUILD_H
#define VESK_EBN_BNLOGICBUILD_H

#include "BNState.h"
#include "BNet.h"
#include "LocalDist.h"
#include "LocalLogic.h"

#include <istream>

// Node table: triples "unused vid card". A node is added for each triple whose vid the network
// lacks, so a caller may add the nodes itself, make and read the LocalLogicSet on them, and then
// build from the same table; n, the number of triples, names rvids 0..n-1 as the variables.
//
// Attribute table: records "vid key v1 v2 v3" (plain form) or "vid key v1 v2" (consistency
// form), white-space separated. Keys read from v1: "regulator0", "regulator1", ... (a regulator's
// vid; the walk stops at the first number missing), "in_logic" (the logic id of the variable;
// fatal when missing) and "uniform_prior" (default_noise where absent).
//
// Plain form: edges regulator -> variable; with s = card^(regulators + 1), an LDSoftLogic with
// set_uniform_prior(prior) when s <= 10000, else an LDTableDispatch cached from the logic node
// with the prior as noise.
void build_bnet_from_logic_with_disp_ldtabs(BNet<int>& net, BNStateDispatch<int>& state, std::istream& nodes,
                                            std::istream& attrs, float default_noise, LocalLogicSet& logic,
                                            LocalDistSet<int>& dists);

// Consistency form: the network grows to 3n nodes; n + i is the binary consistency node of
// variable i (parents i, then i's regulators) and 2n + i a binary companion with parent i, the
// added nodes taking vid = rvid. With s as above, the consistency node gets an LDTableDispatch
// from cache_consist_from_hnode when s < 10000, else an LDConsistSoftLogic. Variables and
// companions get no distribution here.
void build_fbn_from_logic_with_disp_ldtabs(BNet<int>& net, BNStateDispatch<int>& state, std::istream& nodes,
                                           std::istream& attrs, float default_noise, LocalLogicSet& logic,
                                           LocalDistSet<int>& dists);

#endif
