// StateDataSetReal: table readers, array types and normalisations.
#include "StateDataSetReal.h"

#include "ArraysGeneSets.h"
#include "error.h"
#include "idbound.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <unordered_map>

static constexpr char kSrc[] = "StateDataSetReal";

namespace {

void skip_rest_of_line(std::istream& in) { in.ignore(std::numeric_limits<std::streamsize>::max(), '\n'); }

// Splits a line at tabs (and blanks when `blank_sep`), dropping carriage returns.
void split_fields(const std::string& line, bool blank_sep, std::vector<std::string>& fields) {
    fields.clear();
    std::string cur;
    for (char c : line) {
        if (c == '\r')
            continue;
        if (c == '\t' || (blank_sep && c == ' ')) {
            fields.push_back(cur);
            cur.clear();
        } else {
            cur += c;
        }
    }
    fields.push_back(cur);
}

const std::string* find_param(const std::map<std::string, std::string>& params, const char* key) {
    auto it = params.find(key);
    return it == params.end() ? nullptr : &it->second;
}

int param_int(const std::map<std::string, std::string>& params, const char* key, int dflt) {
    const std::string* s = find_param(params, key);
    return s ? std::atoi(s->c_str()) : dflt;
}

// One cell of a wide table. Empty, unparsable, not-a-number and out-of-range fields are missing;
// is_affy clamps to 20 ... 16000 first; then take_log 1 takes log2 and 10 turns a base-10 logarithm
// into a base-2 one.
float parse_txt_cell(const std::string& field, int take_log, bool is_affy) {
    if (field.empty())
        return kMissingVal;
    const char* s = field.c_str();
    char* end = nullptr;
    float x = std::strtof(s, &end);
    if (end == s || x != x)
        return kMissingVal;
    if (is_affy) {
        if (x < 20.0f)
            x = 20.0f;
        else if (x > 16000.0f)
            x = 16000.0f;
    }
    if (x >= FLT_MAX || x <= -FLT_MAX)
        return kMissingVal;
    if (take_log == 1)
        x = log2f(x);
    else if (take_log == 10)
        x = x / (logf(2.0f) / logf(10.0f));
    // The log of a negative value is no number: missing. The log of 0 stays minus infinity, which
    // is missing for every later test.
    if (x != x)
        return kMissingVal;
    return x;
}

} // namespace

bool StateDataSetReal::is_perturbed(int e, int v) const {
    if (e < 0 || e >= static_cast<int>(m_pert.size()) || v < 0 || v >= m_pert[e].size())
        return false;
    return (m_pert[e].word(v / 32) >> (v & 31)) & 1u;
}

void StateDataSetReal::set_cell(int e, int v, float val) {
    // The experiment id is tested against the row count, which counts variables.
    if (e >= m_data.rows())
        m_data.resize_rows(e + 1, 0.0f);
    if (v >= 0 && v < m_data.rows() && e >= 0 && e < m_data.cols())
        m_data(v, e) = val;
}

bool StateDataSetReal::measured(int e, int v) const {
    if (!m_arrays || e >= static_cast<int>(m_e_array.size()))
        return true;
    const int a = m_e_array[e];
    if (a < 0 || a >= m_arrays->size())
        return true;
    return m_arrays->measures(a, v);
}

void StateDataSetReal::fit_exp_tables(int n, float weight_fill, int array_fill) {
    m_e_series.resize(n, 0);
    m_e_weight.resize(n, weight_fill);
    m_e_array.resize(n, array_fill);
    m_e_names.resize(n);
    if (static_cast<int>(m_e_key.size()) > n)
        m_e_key.resize(n);
}

void StateDataSetReal::read(std::istream& key, std::istream& data, float default_val) {
    int e, series, array_type;
    float weight;
    std::string name, ignored;
    while (key >> e >> name >> ignored >> series >> weight >> array_type) {
        skip_rest_of_line(key);
        // The data matrix has a column per experiment id, a row per variable.
        if (!input_id_ok(e, input_id_limit(num_vars())))
            VESK_FATAL(kSrc, "Bad exp num " << e);
        if (series < 0)
            VESK_FATAL(kSrc, "Bad series num " << series);
        if (e >= m_E)
            m_E = e + 1;
        fit_exp_tables(m_E, 0.0f, 0);
        m_e_names[e] = name;
        m_e_series[e] = series;
        m_e_weight[e] = weight;
        m_e_array[e] = array_type;
        add_to_series(e, series);
    }

    const int nv = num_vars();
    m_data.resize(nv, m_E, default_val);
    m_data.set_all(default_val);
    int v;
    std::string tok;
    while (data >> v >> e >> tok) {
        const char* s = tok.c_str();
        char* end = nullptr;
        float x = std::strtof(s, &end);
        if (end == s) // not a number: the table ends here
            break;
        if (v < 0 || v >= nv)
            VESK_FATAL(kSrc, "Bad var num " << v);
        if (e < 0 || e >= m_E)
            VESK_FATAL(kSrc, "Bad exp num " << e);
        m_data(v, e) = x != x ? kMissingVal : x;
    }
}

void StateDataSetReal::read_multi(std::istream& key, std::istream& data, std::istream& arrk,
                                  std::istream& arrd, float default_val) {
    set_arrays(new ArraysGeneSets(m_universe));
    m_arrays->read(arrk, arrd);
    read(key, data, default_val);
}

int StateDataSetReal::match_name(const std::string& key) const {
    const VarUniverse& u = m_universe;
    int id = VarUniverse::find(u.m_short_to_id, key);
    if (id < 0)
        id = VarUniverse::find(u.m_alias_to_id, key);
    if (id < 0)
        id = VarUniverse::find(u.m_name_to_id, key);
    if (id < 0)
        id = VarUniverse::find(u.m_name_to_id, "m" + key);
    return id;
}

void StateDataSetReal::read_txt(std::map<std::string, std::string>& params, int key_id) {
    const std::string* file = find_param(params, "file");
    if (!file) {
        std::cerr << "missing options: file, giving up on these props" << std::endl;
        return;
    }
    std::ifstream in(file->c_str(), std::ios::binary);
    if (!in) {
        std::cerr << "cannot open table " << *file << std::endl;
        return;
    }
    TxtLayout t;
    t.take_log = param_int(params, "take_log", 0);
    std::cerr << "take log is " << t.take_log << std::endl;
    t.key_col = std::max(0, param_int(params, "key_col", 0));
    t.first_data_col = std::max(0, param_int(params, "first_data_col", 1));
    find_param(params, "nonparametric"); // recognised, without effect
    t.is_affy = param_int(params, "is_affy", 0) != 0;
    t.click = param_int(params, "click_format", 0) != 0;
    t.base = m_E;

    read_txt_header(in, t, key_id);
    std::cerr << "max pid " << m_E << std::endl;
    m_data.resize(num_vars(), m_E, kMissingVal);
    const int matched = read_txt_rows(in, t);

    const std::string* one_type = find_param(params, "one_array_type");
    calc_array_type(one_type && *one_type == "0" ? 0 : 1);
    normalise_txt(params, t.base);
    std::cerr << "match count = " << matched << std::endl;
}

void StateDataSetReal::append_txt_exp(const std::string& name, int key) {
    m_e_series.push_back(0);
    m_e_weight.push_back(1.0f);
    m_e_array.push_back(-1);
    m_e_key.push_back(key);
    m_series[0].m_members.push_front(m_E);
    m_e_names.push_back(name);
    ++m_E;
}

void StateDataSetReal::read_txt_header(std::istream& in, TxtLayout& t, int key_id) {
    m_series.resize(1);
    fit_exp_tables(t.base, 1.0f, -1);
    m_e_key.resize(t.base, 0);
    std::string line;
    if (t.click) {
        int rows = 0, cols = 0;
        in >> rows >> cols;
        // The count sizes the data matrix; one that doesn't parse or can't fit is fatal.
        if (!in || !input_id_ok(cols, input_id_limit(num_vars()) - t.base))
            VESK_FATAL(kSrc, "Bad experiment count " << cols << " in click format header");
        std::getline(in, line); // the rest of the header line
        for (int i = 0; i < cols; ++i)
            append_txt_exp("click_fmt", 0);
        std::cerr << "click mode, num e is " << m_E << std::endl;
        return;
    }
    std::vector<std::string> fields;
    std::getline(in, line);
    split_fields(line, false, fields);
    // The first first_data_col fields are the row labels' headers; the rest name experiments.
    if (t.first_data_col > 0 && fields[0] == "Var_id")
        t.var_ids = true;
    int last_named = t.base - 1;
    for (size_t i = t.first_data_col; i < fields.size(); ++i) {
        append_txt_exp(fields[i], key_id);
        if (!fields[i].empty()) {
            std::cerr << "got ptop " << fields[i] << " " << m_E - 1 << std::endl;
            last_named = m_E - 1;
        }
    }
    // Every header field makes a column of the data matrix: a header far wider than any table
    // the matrix can hold is fatal rather than an allocation beyond memory.
    if (m_E > input_id_limit(num_vars()))
        VESK_FATAL(kSrc, "Bad experiment count " << m_E << " in header");
    if (last_named != m_E - 1) {
        // Trailing empty header fields make no experiments; series 0 keeps their ids.
        std::cerr << "striping empty fields from " << m_E << " to " << last_named << std::endl;
        m_E = last_named + 1;
        fit_exp_tables(m_E, 1.0f, -1);
        m_e_key.resize(m_E);
    }
}

int StateDataSetReal::read_txt_rows(std::istream& in, const TxtLayout& t) {
    const int nv = num_vars();
    std::string line;
    std::vector<std::string> fields;
    int matched = 0;
    while (std::getline(in, line)) {
        split_fields(line, t.click, fields);
        const std::string key =
            t.key_col < static_cast<int>(fields.size()) ? fields[t.key_col] : std::string();
        int id = -1;
        if (t.click) {
            id = matched < nv ? matched : -1;
        } else if (t.var_ids) {
            const char* s = key.c_str();
            char* end = nullptr;
            const long n = std::strtol(s, &end, 10);
            if (end != s && n >= 0 && n < nv)
                id = static_cast<int>(n);
        } else {
            id = match_name(key);
            if (id >= nv)
                id = -1;
        }
        if (id < 0) {
            std::cerr << "cannot match props for var " << key << std::endl;
            continue;
        }
        ++matched;
        // Fields past the experiments of this table have no column and are dropped.
        int col = t.base;
        for (size_t f = std::max(t.key_col + 1, t.first_data_col); f < fields.size() && col < m_E; ++f, ++col)
            m_data(id, col) = parse_txt_cell(fields[f], t.take_log, t.is_affy);
    }
    return matched;
}

void StateDataSetReal::normalise_txt(std::map<std::string, std::string>& params, int base) {
    if (const std::string* norm = find_param(params, "normalize_cond"))
        cond_standartize(*norm == "just_mean", base);
    if (const std::string* ref = find_param(params, "norm_gene_by_ref"); ref && *ref == "1")
        gene_norm_by_ref(base + param_int(params, "reference_col", 0), base);
    if (const std::string* ng = find_param(params, "normalize_gene"); ng && *ng == "1")
        gene_standartize(false, base);
}

void StateDataSetReal::read_key(const std::string& type, std::map<std::string, std::string>& params,
                                int key_id) {
    if (type == "txt") {
        read_txt(params, key_id);
    } else if (type == "tab") {
        const std::string* dir = find_param(params, "file");
        const std::string key_path = (dir ? *dir : std::string()) + "/expk.txt";
        const std::string data_path = (dir ? *dir : std::string()) + "/expr.txt";
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
        read(key, data, dv ? std::strtof(dv->c_str(), nullptr) : 0.0f);
        m_e_key.resize(m_E, key_id);
    }
    // "geo" is recognised and, like any other type, reads nothing.
}

void StateDataSetReal::read_prop_key(const std::string& file) {
    std::ifstream in(file.c_str(), std::ios::binary);
    if (!in)
        VESK_FATAL(kSrc, "cannot open propkey file " << file);
    int id;
    std::string type, line;
    std::vector<std::string> fields;
    while (in >> id >> type) {
        int sep = in.get();
        while (sep == '\r')
            sep = in.get();
        if (sep == '\n' || sep == std::char_traits<char>::eof())
            VESK_FATAL(kSrc, "no params at property key table line " << id);
        std::getline(in, line);
        split_fields(line, false, fields);
        std::map<std::string, std::string> params;
        for (size_t i = 0; i + 1 < fields.size(); i += 2)
            params[fields[i]] = fields[i + 1];
        const std::string* f = find_param(params, "file");
        std::cerr << "will read, file is " << (f ? *f : std::string()) << std::endl;
        read_key(type, params, id);
    }
}

void StateDataSetReal::read_mat(std::istream& in, int num_cols) {
    const int nv = num_vars();
    if (!input_id_ok(num_cols, input_id_limit(nv) + 1))
        VESK_FATAL(kSrc, "Bad number of columns " << num_cols << " for expression matrix");
    m_E = num_cols;
    m_data.resize(0, 0, 0.0f);
    m_data.resize(nv, m_E, 0.0f);
    fit_exp_tables(m_E, 1.0f, -1);
    std::string line;
    std::vector<float> vals;
    int line_no = 0;
    int row = 0;
    while (std::getline(in, line)) {
        ++line_no;
        if (line.size() <= 1)
            continue;
        // The label runs to the first blank; one value follows each blank.
        vals.clear();
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] != ' ')
                continue;
            const float x = std::strtof(line.c_str() + i + 1, nullptr);
            vals.push_back(x != x ? kMissingVal : x);
        }
        const int count = static_cast<int>(vals.size());
        if (count != num_cols)
            VESK_FATAL(kSrc, "Bad number of filed in line " << line_no << " of expression matrix, should be "
                                                            << num_cols << " but count is " << count);
        if (row >= nv) {
            std::cerr << "matrix row " << row << " is past the universe, skipped" << std::endl;
        } else {
            for (int c = 0; c < count; ++c)
                m_data(row, c) = vals[c];
        }
        ++row;
    }
}

void StateDataSetReal::calc_array_type(int one_type) {
    std::cerr << "will init array type " << one_type << std::endl;
    if (!m_arrays) {
        set_arrays(new ArraysGeneSets(m_universe));
        std::cerr << "init array set" << std::endl;
    }
    const int nv = num_vars();
    m_e_array.resize(m_E, -1);
    if (one_type == 0) {
        // Patterns already in the set keep their numbers; a new one gets the next.
        std::unordered_map<ds_bitvec, int, ds_bitvec_hash> types;
        for (int a = 0; a < m_arrays->size(); ++a)
            types.emplace((*m_arrays)[a], a);
        for (int e = 0; e < m_E; ++e) {
            ds_bitvec present(nv);
            for (int v = 0; v < nv; ++v)
                if (!is_missing_val(cell(v, e)))
                    present.set_ind(v);
            auto it = types.find(present);
            int a;
            if (it == types.end()) {
                a = m_arrays->add_array();
                (*m_arrays)[a] = present;
                types.emplace(present, a);
                std::cerr << "new array, pid " << a << " size " << present.on_bits() << std::endl;
            } else {
                a = it->second;
            }
            m_e_array[e] = a;
        }
    } else {
        ds_bitvec present(nv);
        for (int e = 0; e < m_E; ++e) {
            m_e_array[e] = 0;
            for (int v = 0; v < nv; ++v)
                if (!is_missing_val(cell(v, e)))
                    present.set_ind(v);
        }
        std::cerr << "don init fp\n";
        if (m_arrays->size() == 0)
            m_arrays->add_array();
        (*m_arrays)[0] = present;
        std::cerr << "will add avars, " << present.on_bits() << std::endl;
    }
}

void StateDataSetReal::cond_standartize(bool just_mean, int first_e) {
    const int nv = std::min(num_vars(), m_data.rows());
    const int ne = std::min(m_E, m_data.cols());
    for (int e = std::max(first_e, 0); e < ne; ++e) {
        float sum = 0.0f, sumsq = 0.0f;
        int n = 0;
        for (int v = 0; v < nv; ++v) {
            const float x = m_data(v, e);
            if (is_missing_val(x) || !measured(e, v))
                continue;
            sum += x;
            sumsq += x * x;
            ++n;
        }
        const float mean = sum / static_cast<float>(n);
        const float var = sumsq / static_cast<float>(n) - mean * mean;
        const float sd = sqrtf(var);
        std::cerr << e << " mean " << mean << " std " << sd << std::endl;
        for (int v = 0; v < nv; ++v) {
            float& x = m_data(v, e);
            if (is_missing_val(x))
                continue;
            x = just_mean ? x - mean : (x - mean) / sd;
        }
    }
}

void StateDataSetReal::gene_standartize(bool take_log, int first_e) {
    const int nv = std::min(num_vars(), m_data.rows());
    const int ne = std::min(m_E, m_data.cols());
    first_e = std::max(first_e, 0);
    for (int v = 0; v < nv; ++v) {
        float sum = 0.0f, sumsq = 0.0f;
        int n = 0;
        for (int e = first_e; e < ne; ++e) {
            const float x = m_data(v, e);
            if (is_missing_val(x) || !measured(e, v))
                continue;
            const float y = take_log ? log2f(x) : x;
            sum += y;
            sumsq += y * y;
            ++n;
        }
        if (n == 0)
            continue;
        const float mean = sum / static_cast<float>(n);
        const float var = sumsq / static_cast<float>(n) - mean * mean;
        const float sd = var > 0.0f ? sqrtf(var) : 1.0f;
        // With take_log the cell enters as its natural logarithm while mean and sd are of log2.
        for (int e = first_e; e < ne; ++e) {
            float& x = m_data(v, e);
            if (is_missing_val(x))
                continue;
            const float y = take_log ? logf(x) : x;
            x = (y - mean) / sd;
        }
    }
}

void StateDataSetReal::gene_norm_by_ref(int ref_e, int first_e) {
    const int nv = std::min(num_vars(), m_data.rows());
    const int ne = std::min(m_E, m_data.cols());
    if (ref_e < 0 || ref_e >= ne)
        return;
    for (int v = 0; v < nv; ++v) {
        // The reference is taken as it is, missing or not.
        const float ref = m_data(v, ref_e);
        for (int e = std::max(first_e, 0); e < ne; ++e) {
            float& x = m_data(v, e);
            if (!is_missing_val(x))
                x -= ref;
        }
    }
}

void StateDataSetReal::set_max_eid(int num_e, float fill) {
    m_E = num_e;
    m_data.resize(num_vars(), num_e, fill);
    fit_exp_tables(num_e, 1.0f, -1);
}

void StateDataSetReal::dump_expk(std::ostream& out) const {
    for (int e = 0; e < m_E; ++e)
        out << e << "\t" << (e < static_cast<int>(m_e_names.size()) ? m_e_names[e] : std::string()) << "\n";
}
