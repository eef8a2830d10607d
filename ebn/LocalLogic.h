// Logic nodes (sum, max, min, equal, variable input, discrete table) and LocalLogicSet, their reader.
#ifndef VESK_EBN_LOCALLOGIC_H
#define VESK_EBN_LOCALLOGIC_H

#include "BNState.h"
#include "Net.h"

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

class LocalLogicSet;

// A small deterministic function from the values of a network's variables to one integer. The
// inputs are not owned: the LocalLogicSet that made the nodes owns them all.
class LocalLogicHNode {
public:
    LocalLogicHNode() = default;
    virtual ~LocalLogicHNode();
    LocalLogicHNode(const LocalLogicHNode&) = delete;
    LocalLogicHNode& operator=(const LocalLogicHNode&) = delete;

    virtual int eval(const BNState<int>& state) const = 0;
    // One attribute record: a name and three values. Unknown names are reported, not fatal.
    virtual void set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                          const std::string& val2, const std::string& val3) = 0;
    // The indent, the node's own line, then each input one tab deeper.
    virtual void print(std::string indent, std::ostream& os) const = 0;

    // Input k, growing the input list with nulls as needed.
    void set_input(int k, LocalLogicHNode* node);
    const std::vector<LocalLogicHNode*>& get_inputs() const { return m_inputs; }

protected:
    // Handles an attribute named "input<k>": val1 is a flag, val2 an id. Flag 0 names a logic node
    // of the set, anything else a vid. `trace` opens the trace line. False for any other name.
    bool set_input_attr(LocalLogicSet& set, const char* trace, const std::string& name,
                        const std::string& val1, const std::string& val2);
    void print_inputs(const std::string& indent, std::ostream& os) const;

    std::vector<LocalLogicHNode*> m_inputs;
};

// Sum of the inputs times m_factor, truncated, capped at m_max, truncated again.
class LocalLogicHNodeSum : public LocalLogicHNode {
public:
    explicit LocalLogicHNodeSum(int max);
    int eval(const BNState<int>& state) const override;
    // "factor", "max" and the inputs.
    void set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                  const std::string& val2, const std::string& val3) override;
    void print(std::string indent, std::ostream& os) const override;

private:
    float m_factor;
    float m_max;
};

// Max and Min: an extreme input value plus m_add, capped at m_max, truncated; attributes "add", "max"
// and the inputs.
class LocalLogicHNodeAddCap : public LocalLogicHNode {
public:
    void set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                  const std::string& val2, const std::string& val3) override;
    void print(std::string indent, std::ostream& os) const override;

protected:
    // `attr_trace` opens the input-attribute trace, `kind` names the node in the unknown-name text,
    // `label` is its printed name.
    LocalLogicHNodeAddCap(const char* attr_trace, const char* kind, const char* label);
    int add_and_cap(int extreme) const;

private:
    const char* m_attr_trace;
    const char* m_kind;
    const char* m_label;
    float m_add;
    float m_max;
};

// The largest input value, starting from 0, plus m_add, capped at m_max, truncated.
class LocalLogicHNodeMax : public LocalLogicHNodeAddCap {
public:
    LocalLogicHNodeMax();
    int eval(const BNState<int>& state) const override;
};

// The smallest input value, starting from 2147483647, plus m_add, capped at m_max, truncated.
// A result past the int range (no inputs) saturates at 2147483647.
class LocalLogicHNodeMin : public LocalLogicHNodeAddCap {
public:
    LocalLogicHNodeMin();
    int eval(const BNState<int>& state) const override;
};

// 1 if all inputs evaluate alike, else 0; needs a first input. Made only by code.
class LocalLogicHNodeEqual : public LocalLogicHNode {
public:
    int eval(const BNState<int>& state) const override;
    void set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                  const std::string& val2, const std::string& val3) override;
    void print(std::string indent, std::ostream& os) const override;
};

// The value of one variable in the state; each evaluation is traced on the error stream.
class LocalLogicHNodeVarInp : public LocalLogicHNode {
public:
    explicit LocalLogicHNodeVarInp(int rvid) : m_rvid(rvid) {}
    int eval(const BNState<int>& state) const override;
    void set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                  const std::string& val2, const std::string& val3) override;
    void print(std::string indent, std::ostream& os) const override;
    int get_rvid() const { return m_rvid; }

private:
    int m_rvid;
};

// A lookup table over the inputs: entry sum of input k's value times card^k.
class LocalLogicHNodeDiscTable : public LocalLogicHNode {
public:
    // card^num_inputs entries, all 0.
    LocalLogicHNodeDiscTable(int num_inputs, int card);
    int eval(const BNState<int>& state) const override;
    // "table": the entries in order, separated by single blanks. A list shorter than the table
    // ends in the std::out_of_range of std::string::substr, which nothing catches.
    void set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                  const std::string& val2, const std::string& val3) override;
    void print(std::string indent, std::ostream& os) const override;
    void set_val(std::vector<int>& inputs, int value);
    const std::vector<int>& get_table() const { return m_table; }

private:
    std::vector<int> m_input_factors;
    std::vector<int> m_table;
};

// All logic nodes of one network by logic id, plus one variable-input node per rvid. Owns them.
//
// Node stream: a first logic id, then per node "type a b unused" and the next id; types "table"
// (DiscTable(a, b)), "sum" (Sum(b - 1)), "min", "max". An unknown type is reported and the
// reader reads the next type at once, so the rest of the stream is read out of step.
//
// Attribute stream: per record a logic id, one separator character, then four tab-separated
// fields up to the line end: name, val1, val2, val3. Any other field count is fatal. Ids of
// nodes that were never made are not checked: the records are applied as they stand.
class LocalLogicSet {
public:
    explicit LocalLogicSet(const Net& net);
    ~LocalLogicSet();
    LocalLogicSet(const LocalLogicSet&) = delete;
    LocalLogicSet& operator=(const LocalLogicSet&) = delete;

    void read(std::istream& nodes, std::istream& attrs);

    // The input node of a variable, taken at position `vid`: right when vids equal rvids (a
    // network whose vids were added 0, 1, 2, ... in order). With sparse vids the node found at
    // `vid` reads the variable whose rvid equals that vid, not the one named; such networks are
    // not served. Fatal when the network has no node for `vid`.
    LocalLogicHNodeVarInp* get_variable_inp_node(int vid);

    // Null for an id never filled.
    LocalLogicHNode* get_node(int lid) const;
    int get_nodes_num() const { return static_cast<int>(m_nodes.size()); }
    // Stores a node made by code under `lid` and takes ownership; a node held there is deleted.
    void set_node(int lid, LocalLogicHNode* node);

private:
    const Net& m_net;
    std::vector<std::unique_ptr<LocalLogicHNodeVarInp>> m_var_inputs;
    std::vector<std::unique_ptr<LocalLogicHNode>> m_nodes;
};

#endif
