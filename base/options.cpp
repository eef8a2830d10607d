// The option-file parser and the getters of the scoped store.
#include "options.h"

#include "error.h"

#include <cstdlib>
#include <iostream>

static constexpr char kSrc[] = "options";

namespace {

// Blank means the space character only.
void trim_leading_blanks(std::string& s) {
    std::string::size_type p = s.find_first_not_of(' ');
    s.erase(0, p == std::string::npos ? s.size() : p);
}

void trim_trailing_blanks(std::string& s) {
    std::string::size_type p = s.find_last_not_of(' ');
    s.erase(p == std::string::npos ? 0 : p + 1);
}

// One array item: a number, or a whole line for a string.
void read_item(std::istream& in, int& x) { in >> x; }
void read_item(std::istream& in, float& x) { in >> x; }
void read_item(std::istream& in, std::string& x) { std::getline(in, x); }

// `size` items (none for a size below 1) into a new array stored under `key`. The array grows as
// items arrive, so a declared size far beyond the items given costs nothing: the stream fails at the
// end of the file and the closing test that follows is fatal before anyone sees the short array.
template <class T>
void read_items(std::istream& in, int size, std::map<std::string, std::vector<T>*>& arrays,
                const std::string& key) {
    std::vector<T>* v = new std::vector<T>();
    for (int i = 0; i < size; ++i) {
        T item{};
        read_item(in, item);
        if (!in)
            break;
        v->push_back(item);
    }
    arrays[key] = v;
}

} // namespace

options::options() : m_verbose(false) {}

bool options::is_comment_line(std::string& line) { return !line.empty() && line[0] == '#'; }

bool options::is_scope_line(std::string& line) {
    if (line.empty() || line[0] != '[')
        return false;
    std::string::size_type close = line.find(']', 1);
    m_cur_scope = line.substr(1, close == std::string::npos ? std::string::npos : close - 1);
    if (m_verbose)
        std::cerr << "new scope " << m_cur_scope << std::endl;
    return true;
}

// Takes the name before the first "=", removes it and the "=", then leading blanks.
bool options::get_option_name(std::string& line) {
    std::string::size_type eq = line.find('=');
    if (eq == std::string::npos || eq == 0)
        return false;
    std::string name = line.substr(0, eq);
    trim_trailing_blanks(name);
    std::string::size_type blank = name.find(' ');
    if (blank != std::string::npos) {
        std::cerr << "bad option name (with space) -" << name << "- pos is " << blank << std::endl;
        return false;
    }
    m_cur_name = name;
    line.erase(0, eq + 1);
    trim_leading_blanks(line);
    if (m_verbose) {
        std::cerr << "new option name is " << m_cur_name << std::endl;
        std::cerr << "line is left with " << line << std::endl;
    }
    return true;
}

bool options::is_array_line(std::string& line, std::istream& in) {
    if (line.empty() || line[0] != '{') {
        if (m_verbose)
            std::cerr << "not array line" << std::endl;
        return false;
    }
    line.erase(0, 1);
    trim_leading_blanks(line);
    std::string::size_type blank = line.find(' ');
    if (blank == std::string::npos) {
        // A type with no size after it: treated as a line that does not parse.
        VESK_FATAL(kSrc, "problem parsing line " << line);
    }
    std::string type = line.substr(0, blank);
    line.erase(0, blank + 1);
    trim_leading_blanks(line);
    std::string size_text = line.substr(0, line.find(' '));
    int size = static_cast<int>(std::strtol(size_text.c_str(), nullptr, 10));
    if (m_verbose)
        std::cerr << "array " << m_cur_name << " type " << type << " size " << size_text << std::endl;

    read_array_items(type, size, in);
    read_array_close(size, in);
    if (m_verbose)
        std::cerr << "out of array read" << std::endl;
    return true;
}

void options::read_array_items(const std::string& type, int size, std::istream& in) {
    const std::string key = key_of(m_cur_name);
    if (type == "i")
        read_items(in, size, m_opt_ints, key);
    else if (type == "f")
        read_items(in, size, m_opt_floats, key);
    else if (type == "s")
        read_items(in, size, m_opt_strs, key);
    else
        VESK_FATAL(kSrc, "Bad array type " << type << " for name " << m_cur_name);
}

void options::read_array_close(int size, std::istream& in) {
    // The closing line must begin with "}"; for numeric items one extra line is read first
    // to skip the rest of the last item's line.
    std::string closing;
    std::getline(in, closing);
    if (!closing.empty() && closing[0] == '}')
        return;
    bool closed = false;
    if (size != 0) {
        closing.clear();
        std::getline(in, closing);
        closed = !closing.empty() && closing[0] == '}';
    }
    if (!closed)
        VESK_FATAL(kSrc, "After array items, line is " << closing);
}

bool options::is_option_line(std::string& line) {
    trim_trailing_blanks(line);
    const std::string key = key_of(m_cur_name);
    if (m_verbose)
        std::cerr << "assigning to " << m_cur_name << " option " << line << std::endl;
    m_opt_values[key] = line;
    return true;
}

void options::read(std::istream& in, bool trace) {
    m_verbose = trace;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty())
            continue;
        if (m_verbose)
            std::cerr << "new line is %%" << line << "%%" << std::endl;
        if (is_comment_line(line))
            continue;
        if (is_scope_line(line))
            continue;
        if (!get_option_name(line))
            VESK_FATAL(kSrc, "problem parsing line " << line);
        if (is_array_line(line, in))
            continue;
        is_option_line(line);
    }
}

void options::missing(const std::string& scope, const std::string& name) const {
    VESK_FATAL(kSrc, "option does not exists: " << scope << "::" << name);
}

int options::get_int(const std::string& scope, const std::string& name, bool required) {
    auto it = m_opt_values.find(scope + "::" + name);
    if (it == m_opt_values.end()) {
        if (required)
            missing(scope, name);
        return 0;
    }
    return static_cast<int>(std::strtol(it->second.c_str(), nullptr, 10));
}

float options::get_float(const std::string& scope, const std::string& name, bool required) {
    auto it = m_opt_values.find(scope + "::" + name);
    if (it == m_opt_values.end()) {
        if (required)
            missing(scope, name);
        return 0.0f;
    }
    return static_cast<float>(std::strtod(it->second.c_str(), nullptr));
}

std::string& options::get_str(const std::string& scope, const std::string& name, bool required) {
    const std::string key = scope + "::" + name;
    auto it = m_opt_values.find(key);
    if (it == m_opt_values.end()) {
        if (required)
            missing(scope, name);
        // The empty string stays in the store: later required gets of the key succeed.
        return m_opt_values[key];
    }
    return it->second;
}

std::vector<int>* options::get_ints(const std::string& scope, const std::string& name, bool required) {
    auto it = m_opt_ints.find(scope + "::" + name);
    if (it != m_opt_ints.end())
        return it->second;
    if (required)
        missing(scope, name);
    m_opt_ints[scope + "::" + name] = nullptr;
    return nullptr;
}

std::vector<float>* options::get_floats(const std::string& scope, const std::string& name, bool required) {
    auto it = m_opt_floats.find(scope + "::" + name);
    if (it != m_opt_floats.end())
        return it->second;
    if (required)
        missing(scope, name);
    m_opt_floats[scope + "::" + name] = nullptr;
    return nullptr;
}

std::vector<std::string>* options::get_strs(const std::string& scope, const std::string& name,
                                            bool required) {
    auto it = m_opt_strs.find(scope + "::" + name);
    if (it != m_opt_strs.end())
        return it->second;
    if (required)
        missing(scope, name);
    m_opt_strs[scope + "::" + name] = nullptr;
    return nullptr;
}
