// PropMatrix: the three readers, the name matching and the normalisations.
#include "PropMatrix.h"

#include "error.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

static constexpr char kSrc[] = "PropMatrix";

namespace {

const std::string* find_param(std::map<std::string, std::string>& params, const char* key) {
    auto it = params.find(key);
    return it == params.end() ? nullptr : &it->second;
}

int param_int(std::map<std::string, std::string>& params, const char* key, int dflt) {
    const std::string* s = find_param(params, key);
    return s ? std::atoi(s->c_str()) : dflt;
}

// The `file` parameter, or null with the message.
const std::string* file_param(std::map<std::string, std::string>& params) {
    const std::string* file = find_param(params, "file");
    if (!file)
        std::cerr << "missing options: file, giving up on these props" << std::endl;
    return file;
}

void split_tabs(const std::string& line, std::vector<std::string>& out) {
    out.clear();
    std::string cur;
    for (char c : line) {
        if (c == '\t') {
            out.push_back(cur);
            cur.clear();
        } else if (c != '\r' && c != '\n') {
            cur += c;
        }
    }
    out.push_back(cur);
}

float parse_cell(const std::string& field, int take_log) {
    if (field.empty())
        return PropMatrix::kMissing;
    const char* s = field.c_str();
    char* end = nullptr;
    float x = std::strtof(s, &end);
    if (end == s || x != x || std::isinf(x))
        return PropMatrix::kMissing;
    if (take_log == 1)
        x = log2f(x);
    if (x != x || std::isinf(x))
        return PropMatrix::kMissing;
    return x;
}

// Population mean and standard deviation of the present values, then (x - mean) / sd in place.
template <class Get> void standardize(int n, Get get) {
    long double sum = 0.0L, sq = 0.0L;
    int cnt = 0;
    for (int i = 0; i < n; ++i) {
        const float x = get(i);
        if (x != PropMatrix::kMissing) {
            sum += x;
            sq += static_cast<long double>(x) * x;
            ++cnt;
        }
    }
    if (cnt == 0)
        return;
    const long double mean = sum / cnt;
    long double var = sq / cnt - mean * mean;
    if (var < 0.0L)
        var = 0.0L;
    const long double sd = std::sqrt(var);
    for (int i = 0; i < n; ++i) {
        float& x = get(i);
        if (x != PropMatrix::kMissing)
            x = static_cast<float>((x - mean) / sd);
    }
}

} // namespace

void PropMatrix::read(const std::string& type, std::map<std::string, std::string>& params) {
    if (type == "txt")
        read_txt(params);
    else if (type == "tab")
        read_tab(params);
    else if (type == "gxp")
        read_gxp(params);
}

int PropMatrix::add_prop(const std::string& name, PropMode mode, float fill) {
    m_values.emplace_back(m_universe.size(), fill);
    m_names.push_back(name);
    m_modes.push_back(mode);
    m_prop_keys.push_back(m_tables);
    m_prop_ext_ids.push_back(-1);
    return prop_num() - 1;
}

int PropMatrix::match_var(const std::string& name) const {
    const VarUniverse& u = m_universe;
    for (const std::string& key : {name, name + "m"}) {
        int id = VarUniverse::find(u.m_short_to_id, key);
        if (id < 0)
            id = VarUniverse::find(u.m_alias_to_id, key);
        if (id < 0)
            id = VarUniverse::find(u.m_name_to_id, key);
        if (id >= 0 && id < u.size())
            return id;
    }
    return -1;
}

void PropMatrix::read_rows(std::istream& in, const std::string& header, const std::string& stop,
                           std::map<std::string, std::string>& params, PropMode mode, int& match,
                           int& nomatch) {
    const int take_log = param_int(params, "take_log", 0);
    const int key_col = std::max(0, param_int(params, "key_col", 0));
    const int first_col = std::max(0, param_int(params, "first_data_col", 1));
    std::vector<std::string> fields;
    split_tabs(header, fields);
    const int first = prop_num();
    for (size_t i = first_col; i < fields.size(); ++i)
        add_prop(fields[i], mode, kMissing);
    const int end = prop_num();
    std::string line;
    match = nomatch = 0;
    while (std::getline(in, line)) {
        if (!stop.empty() && line.compare(0, stop.size(), stop) == 0)
            break;
        if (line.empty() || line == "\r")
            continue;
        split_tabs(line, fields);
        const std::string key = key_col < static_cast<int>(fields.size()) ? fields[key_col] : std::string();
        const int id = match_var(key);
        if (id < 0) {
            std::cerr << "cannot match props for var " << key << std::endl;
            ++nomatch;
            continue;
        }
        ++match;
        int p = first;
        for (size_t f = first_col; f < fields.size() && p < end; ++f, ++p)
            m_values[p][id] = parse_cell(fields[f], take_log);
    }
    ++m_tables;
}

void PropMatrix::read_txt(std::map<std::string, std::string>& params) {
    const std::string* file = file_param(params);
    if (!file)
        return;
    std::ifstream in(file->c_str());
    if (!in) {
        std::cerr << "cannot open table " << *file << std::endl;
        return;
    }
    find_param(params, "nonparametric"); // recognised, without effect
    const int first = prop_num();
    std::string header;
    std::getline(in, header);
    int match = 0, nomatch = 0;
    read_rows(in, header, "", params, kTxt, match, nomatch);
    std::cerr << "match count = " << match << std::endl;
    const std::string* sub = find_param(params, "subtract_cond");
    if (!sub)
        sub = find_param(params, "substract_cond");
    if (sub)
        substract_cond(first, first + std::atoi(sub->c_str()));
    if (param_int(params, "normalize_gene", 0) != 0)
        gene_normalize(first);
    if (param_int(params, "normalize_cond", 0) != 0)
        prop_normalize(first);
}

void PropMatrix::read_gxp(std::map<std::string, std::string>& params) {
    const std::string* file = file_param(params);
    if (!file)
        return;
    std::ifstream in(file->c_str());
    if (!in) {
        std::cerr << "cannot open gxp " << *file << std::endl;
        return;
    }
    find_param(params, "nonparam");
    std::string line;
    while (std::getline(in, line) && line.compare(0, 12, "<TSCRawData>") != 0) {
    }
    int match = 0, nomatch = 0;
    if (std::getline(in, line))
        read_rows(in, line, "</TSCRawData>", params, kGxp, match, nomatch);
    std::cerr << "done read, match " << match << " nomatch " << nomatch << std::endl;
}

void PropMatrix::read_tab(std::map<std::string, std::string>& params) {
    const std::string* file = file_param(params);
    if (!file)
        return;
    const std::string key_path = *file + "/expk.txt";
    const std::string data_path = *file + "/expr.txt";
    std::ifstream key(key_path.c_str());
    if (!key) {
        std::cerr << "cannot open expk " << key_path << std::endl;
        return;
    }
    std::ifstream data(data_path.c_str());
    if (!data) {
        std::cerr << "cannot open expr " << data_path << std::endl;
        return;
    }
    const std::string* dv = find_param(params, "default_val");
    const float fill = dv ? std::strtof(dv->c_str(), nullptr) : kMissing;
    std::vector<std::pair<int, std::string>> keys;
    int max_pid = 0;
    int id;
    std::string name;
    while (key >> id >> name) {
        keys.emplace_back(id, name);
        if (id + 1 > max_pid)
            max_pid = id + 1;
    }
    std::cerr << "max_pid is " << max_pid << std::endl;
    const int first = prop_num();
    for (int p = 0; p < max_pid; ++p)
        add_prop("", kTab, fill);
    for (const auto& k : keys)
        if (k.first >= 0)
            m_names[first + k.first] = k.second;
    std::cerr << "reading meas table to create the map" << std::endl;
    int var, pid;
    float val;
    while (data >> var >> pid >> val) {
        if (var < 0 || var >= m_universe.size())
            VESK_FATAL(kSrc, "Bad var num " << var);
        if (pid < 0 || pid >= max_pid)
            VESK_FATAL(kSrc, "Bad exp num " << pid);
        m_values[first + pid][var] = val;
    }
    ++m_tables;
    std::cerr << "out of here" << std::endl;
}

void PropMatrix::dump_expk(std::ostream& out) const {
    for (int p = 0; p < prop_num(); ++p)
        out << p << "\t" << m_names[p] << "\n";
}

void PropMatrix::prop_normalize(int first) {
    for (int p = first; p < prop_num(); ++p) {
        std::vector<float>& row = m_values[p];
        standardize(static_cast<int>(row.size()), [&row](int i) -> float& { return row[i]; });
    }
}

void PropMatrix::gene_normalize(int first) {
    const int n = prop_num() - first;
    if (n <= 0)
        return;
    for (int v = 0; v < m_universe.size(); ++v)
        standardize(n, [this, first, v](int i) -> float& { return m_values[first + i][v]; });
}

void PropMatrix::substract_cond(int first, int base) {
    const std::vector<float> ref = m_values[base];
    for (int p = first; p < prop_num(); ++p)
        for (size_t v = 0; v < ref.size(); ++v)
            m_values[p][v] -= ref[v];
}
