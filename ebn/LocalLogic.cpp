// Logic nodes: evaluation, attributes and printing; LocalLogicSet: the node and attribute readers.
#include "LocalLogic.h"

#include "error.h"
#include "idbound.h"

#include <climits>
#include <cstdlib>
#include <iostream>

static constexpr char kSrc[] = "LocalLogic";

namespace {

constexpr float kFloatMax = 3.4028235e38f;

// The plain float to int conversion, which truncates toward zero; values past the int range
// saturate instead of being undefined.
int trunc_int(float f) {
    if (f >= 2147483648.0f)
        return INT_MAX;
    if (f < -2147483648.0f)
        return INT_MIN;
    return static_cast<int>(f);
}

int to_int(const std::string& s) { return static_cast<int>(std::strtol(s.c_str(), nullptr, 10)); }

float to_float(const std::string& s) { return std::strtof(s.c_str(), nullptr); }

} // namespace

LocalLogicHNode::~LocalLogicHNode() = default;

void LocalLogicHNode::set_input(int k, LocalLogicHNode* node) {
    if (static_cast<int>(m_inputs.size()) <= k)
        m_inputs.resize(k + 1, nullptr);
    m_inputs[k] = node;
}

bool LocalLogicHNode::set_input_attr(LocalLogicSet& set, const char* trace, const std::string& name,
                                     const std::string& val1, const std::string& val2) {
    if (name.compare(0, 5, "input") != 0)
        return false;
    const int k = to_int(name.substr(5));
    const int flag = to_int(val1);
    const int id = to_int(val2);
    // The position sizes the node's input vector.
    if (!input_id_ok(k))
        VESK_FATAL(kSrc, "Bad input position " << k << " in logic attr " << name);
    std::cerr << trace << name << " i " << k << " lid " << id << " is dir " << flag << std::endl;
    set_input(k, flag == 0 ? set.get_node(id) : set.get_variable_inp_node(id));
    return true;
}

void LocalLogicHNode::print_inputs(const std::string& indent, std::ostream& os) const {
    for (const LocalLogicHNode* in : m_inputs)
        in->print(indent + "\t", os);
}

// ---- Sum

LocalLogicHNodeSum::LocalLogicHNodeSum(int max) : m_factor(1.0f), m_max(static_cast<float>(max)) {}

int LocalLogicHNodeSum::eval(const BNState<int>& state) const {
    int sum = 0;
    for (const LocalLogicHNode* in : m_inputs)
        sum += in->eval(state);
    float v = static_cast<float>(trunc_int(static_cast<float>(sum) * m_factor));
    if (v > m_max)
        v = m_max;
    return trunc_int(v);
}

void LocalLogicHNodeSum::set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                                  const std::string& val2, const std::string& /*val3*/) {
    if (set_input_attr(set, "will set attr of sum : ", name, val1, val2))
        return;
    if (name == "factor")
        m_factor = to_float(val1);
    else if (name == "max")
        m_max = to_float(val1);
    else
        std::cerr << "Unrecognized attribute for Sum node, name = " << name << std::endl;
}

void LocalLogicHNodeSum::print(std::string indent, std::ostream& os) const {
    os << indent << "SUM\n";
    print_inputs(indent, os);
}

// ---- Max and Min

LocalLogicHNodeAddCap::LocalLogicHNodeAddCap(const char* attr_trace, const char* kind, const char* label)
    : m_attr_trace(attr_trace), m_kind(kind), m_label(label), m_add(0.0f), m_max(kFloatMax) {}

int LocalLogicHNodeAddCap::add_and_cap(int extreme) const {
    float v = static_cast<float>(extreme) + m_add;
    if (v > m_max)
        v = m_max;
    return trunc_int(v);
}

void LocalLogicHNodeAddCap::set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                                     const std::string& val2, const std::string& /*val3*/) {
    if (set_input_attr(set, m_attr_trace, name, val1, val2))
        return;
    if (name == "add")
        m_add = to_float(val1);
    else if (name == "max")
        m_max = to_float(val1);
    else
        std::cerr << "Unrecognized attribute for " << m_kind << " node, name = " << name << std::endl;
}

void LocalLogicHNodeAddCap::print(std::string indent, std::ostream& os) const {
    os << indent << m_label << "\n";
    print_inputs(indent, os);
}

LocalLogicHNodeMax::LocalLogicHNodeMax() : LocalLogicHNodeAddCap("will set attr of max: ", "Max", "MAX") {}

int LocalLogicHNodeMax::eval(const BNState<int>& state) const {
    int best = 0;
    for (const LocalLogicHNode* in : m_inputs) {
        const int v = in->eval(state);
        if (v > best)
            best = v;
    }
    return add_and_cap(best);
}

LocalLogicHNodeMin::LocalLogicHNodeMin() : LocalLogicHNodeAddCap("will set attr of min: ", "Min", "MIN") {}

int LocalLogicHNodeMin::eval(const BNState<int>& state) const {
    int least = INT_MAX;
    for (const LocalLogicHNode* in : m_inputs) {
        const int v = in->eval(state);
        if (v < least)
            least = v;
    }
    return add_and_cap(least);
}

// ---- Equal

int LocalLogicHNodeEqual::eval(const BNState<int>& state) const {
    const int first = m_inputs[0]->eval(state);
    for (std::size_t i = 1; i < m_inputs.size(); ++i)
        if (m_inputs[i]->eval(state) != first)
            return 0;
    return 1;
}

void LocalLogicHNodeEqual::set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                                    const std::string& val2, const std::string& /*val3*/) {
    // The equal node shares the max node's trace text.
    if (!set_input_attr(set, "will set attr of max: ", name, val1, val2))
        std::cerr << "Unrecognized attribute for Equal node, name = " << name << std::endl;
}

void LocalLogicHNodeEqual::print(std::string indent, std::ostream& os) const {
    os << indent << "Equal\n";
    print_inputs(indent, os);
}

// ---- VarInp

int LocalLogicHNodeVarInp::eval(const BNState<int>& state) const {
    // One write per trace line: this runs for every evaluation of every table entry.
    std::cerr << ("Inp var is " + std::to_string(m_rvid) + "\n");
    return state[m_rvid];
}

void LocalLogicHNodeVarInp::set_attr(LocalLogicSet& /*set*/, const std::string& name, const std::string& val1,
                                     const std::string& /*val2*/, const std::string& /*val3*/) {
    if (name == "input")
        (void)to_int(val1);
    else
        std::cerr << "Unrecognized attribute for VarInp node, name = " << name << std::endl;
}

void LocalLogicHNodeVarInp::print(std::string indent, std::ostream& os) const {
    os << indent << "Var " << m_rvid << "\n";
}

// ---- DiscTable

LocalLogicHNodeDiscTable::LocalLogicHNodeDiscTable(int num_inputs, int card) {
    int f = 1;
    for (int i = 0; i < num_inputs; ++i) {
        m_input_factors.push_back(f);
        f *= card;
    }
    m_table.assign(f, 0);
}

int LocalLogicHNodeDiscTable::eval(const BNState<int>& state) const {
    int ndx = 0;
    for (std::size_t i = 0; i < m_input_factors.size() && i < m_inputs.size(); ++i)
        ndx += m_inputs[i]->eval(state) * m_input_factors[i];
    return m_table[ndx];
}

void LocalLogicHNodeDiscTable::set_val(std::vector<int>& inputs, int value) {
    int ndx = 0;
    for (std::size_t i = 0; i < m_input_factors.size() && i < inputs.size(); ++i)
        ndx += inputs[i] * m_input_factors[i];
    m_table[ndx] = value;
}

void LocalLogicHNodeDiscTable::set_attr(LocalLogicSet& set, const std::string& name, const std::string& val1,
                                        const std::string& val2, const std::string& /*val3*/) {
    std::cerr << "will set attr, table node " << std::endl;
    if (set_input_attr(set, "will set attr of table : ", name, val1, val2))
        return;
    if (name != "table") {
        // The table node reports with the min node's text.
        std::cerr << "Unrecognized attribute for Min node, name = " << name << std::endl;
        return;
    }
    std::cerr << "will parse table val " << val1 << std::endl;
    std::size_t offs = 0;
    for (std::size_t i = 0; i < m_table.size(); ++i) {
        const std::size_t blank = val1.find(' ', offs);
        // Past the last number the offset stands beyond the string's end and substr throws.
        const std::string item =
            val1.substr(offs, blank == std::string::npos ? std::string::npos : blank - offs);
        m_table[i] = to_int(item);
        std::cerr << "val at " << i << " offs " << offs << " is " << m_table[i] << std::endl;
        offs += item.size() + 1;
    }
}

void LocalLogicHNodeDiscTable::print(std::string indent, std::ostream& os) const {
    os << indent << "TABLE ";
    for (int v : m_table)
        os << v << " ";
    os << "\n";
    print_inputs(indent, os);
}

// ---- LocalLogicSet

LocalLogicSet::LocalLogicSet(const Net& net) : m_net(net) {
    std::cerr << "will init log set of inp vars" << std::endl;
    for (int r = 0; r < net.get_nodes_num(); ++r)
        m_var_inputs.emplace_back(new LocalLogicHNodeVarInp(r));
}

LocalLogicSet::~LocalLogicSet() = default;

LocalLogicHNode* LocalLogicSet::get_node(int lid) const {
    if (lid < 0 || lid >= static_cast<int>(m_nodes.size()))
        return nullptr;
    return m_nodes[lid].get();
}

void LocalLogicSet::set_node(int lid, LocalLogicHNode* node) {
    if (static_cast<int>(m_nodes.size()) <= lid)
        m_nodes.resize(lid + 1);
    m_nodes[lid].reset(node);
}

LocalLogicHNodeVarInp* LocalLogicSet::get_variable_inp_node(int vid) {
    const int rvid = m_net.get_rvid(vid);
    if (rvid < 0)
        VESK_FATAL(kSrc, "No rvid for vid " << vid << " when attempting to get inp node");
    // Filled past both positions, as the node is taken at `vid`.
    const int need = (rvid > vid ? rvid : vid) + 1;
    for (int r = static_cast<int>(m_var_inputs.size()); r < need; ++r)
        m_var_inputs.emplace_back(new LocalLogicHNodeVarInp(r));
    return m_var_inputs[vid].get();
}

namespace {

// Whether a table of `card` ^ `inputs` entries has at least one entry and stays within the input cell
// ceiling. No inputs make a table of one entry whatever the cardinality.
bool logic_table_size_ok(int inputs, int card) {
    if (inputs <= 0)
        return true;
    if (card < 1)
        return false;
    long long f = 1;
    for (int i = 0; i < inputs; ++i) {
        f *= card;
        if (f > input_cell_ceiling())
            return false;
    }
    return true;
}

} // namespace

void LocalLogicSet::read(std::istream& nodes, std::istream& attrs) {
    std::cerr << "will read log set " << std::endl;
    int lid = 0;
    nodes >> lid;
    std::string type, unused;
    int a = 0, b = 0;
    while (nodes >> type >> a >> b >> unused) {
        LocalLogicHNode* node = nullptr;
        if (type != "table" && type != "sum" && type != "min" && type != "max") {
            // No new id is read: the next line's id is taken for a type.
            std::cerr << "Unkown logic node type " << type << std::endl;
            continue;
        }
        if (!input_id_ok(lid))
            VESK_FATAL(kSrc, "Bad logic node id " << lid);
        // A table node holds card^inputs entries.
        if (type == "table" && !logic_table_size_ok(a, b))
            VESK_FATAL(kSrc, "Bad logic table size " << a << " inputs of " << b << " values at node " << lid);
        if (type == "table")
            node = new LocalLogicHNodeDiscTable(a, b);
        else if (type == "sum")
            node = new LocalLogicHNodeSum(b - 1);
        else if (type == "min")
            node = new LocalLogicHNodeMin();
        else if (type == "max")
            node = new LocalLogicHNodeMax();
        set_node(lid, node);
        nodes >> lid;
    }

    while (attrs >> lid) {
        attrs.get(); // the separator after the id
        std::vector<std::string> f(1);
        int c = 0;
        while ((c = attrs.get()) != EOF && c != '\n') {
            if (c == '\t')
                f.emplace_back();
            else
                f.back() += static_cast<char>(c);
        }
        if (f.size() != 4) {
            f.resize(4);
            VESK_FATAL(kSrc, "Bad number of field in logic attr, should be 5, attr_name = "
                                 << f[0] << " f1 " << f[1] << " f[2] " << f[2] << " f[3] " << f[3]
                                 << " lid = " << lid);
        }
        if (!get_node(lid))
            VESK_FATAL(kSrc, "Bad logic node id " << lid << " in logic attrs");
        std::cerr << "will set attr lid " << lid << " name " << f[0] << " val1 " << f[1] << " val3 " << f[3]
                  << std::endl;
        m_nodes[lid]->set_attr(*this, f[0], f[1], f[2], f[3]);
    }
    std::cerr << "done read logattr" << std::endl;
}
