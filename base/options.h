// options: the scoped configuration store read from option files.
#ifndef VESK_BASE_OPTIONS_H
#define VESK_BASE_OPTIONS_H

#include <istream>
#include <map>
#include <string>
#include <vector>

class options {
public:
    options();

    // Parses a whole stream into the store; `trace` traces the parse on the error stream.
    void read(std::istream& in, bool trace);

    int get_int(const std::string& scope, const std::string& name, bool required);
    float get_float(const std::string& scope, const std::string& name, bool required);
    std::string& get_str(const std::string& scope, const std::string& name, bool required);
    std::vector<int>* get_ints(const std::string& scope, const std::string& name, bool required);
    std::vector<float>* get_floats(const std::string& scope, const std::string& name, bool required);
    std::vector<std::string>* get_strs(const std::string& scope, const std::string& name, bool required);

    // True if the scalar `<scope>::<name>` is in the store.
    bool has_option(const std::string& scope, const std::string& name) const {
        return m_opt_values.find(scope + "::" + name) != m_opt_values.end();
    }

    std::map<std::string, std::string> m_opt_values;
    std::map<std::string, std::vector<int>*> m_opt_ints;
    std::map<std::string, std::vector<float>*> m_opt_floats;
    std::map<std::string, std::vector<std::string>*> m_opt_strs;
    std::string m_cur_scope;
    std::string m_cur_name;
    bool m_verbose;

private:
    bool is_comment_line(std::string& line);
    bool is_scope_line(std::string& line);
    bool get_option_name(std::string& line);
    bool is_array_line(std::string& line, std::istream& in);
    // The steps of is_array_line after its header: the items of the array, then its closing line.
    void read_array_items(const std::string& type, int size, std::istream& in);
    void read_array_close(int size, std::istream& in);
    bool is_option_line(std::string& line);

    std::string key_of(const std::string& name) const { return m_cur_scope + "::" + name; }
    [[noreturn]] void missing(const std::string& scope, const std::string& name) const;
};

#endif
