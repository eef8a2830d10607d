// vesk_check: reads a run's option files as vesk does and reports, with file and line, what vesk would
// take without a word (rows it never reads, values it cannot use).
#include "VarClasses.h"
#include "VarUniverse.h"
#include "VeskRun.h"
#include "ds/BitVec.h"
#include "options.h"

#include <unistd.h>

#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

const char kUsage[] =
    "usage: vesk_check run.opt [more.opt ...]\n"
    "Reads the option files in order, as vesk does, then the six tables they name, and reports on the\n"
    "standard output, as <file>:<line>: <finding>, everything vesk would use silently or not at all:\n"
    "  option files that can't be opened; carriage returns kept in values and paths; table rows at\n"
    "  which a reader stops early (with the number of lines left unread); a class key table without\n"
    "  tabs; an unwritable report path; MaxPvToRep at or below 0; a negative BootstrapNum; classes\n"
    "  that the size filters never let through. Notes (which leave the exit status alone) name set\n"
    "  members not on the chip and classes outside the size range when others remain.\n"
    "Exit status: 0 when vesk would use every row and value, 1 otherwise, 2 on a usage error.\n"
    "vesk's own fatal errors (bad ids, missing keys, unreadable tables) end the check as they end vesk.\n";

// A finding is something vesk leaves unused (exit status 1); a note is something it uses in a way
// the user may not expect (reported, exit status unchanged).
struct Report {
    int findings = 0;
    void at(const std::string& file, long line, const std::string& what) {
        std::cout << file << ":" << line << ": " << what << "\n";
        ++findings;
    }
    void note(const std::string& file, long line, const std::string& what) {
        std::cout << file << ":" << line << ": note: " << what << "\n";
    }
};

// Where each scalar key of the option files was last defined.
struct KeyPlace {
    std::string file;
    long line = 0;
};

// Follows the scope lines of the option files, as the store does, to place each scalar key.
void place_keys(const std::string& path, std::string& scope, std::map<std::string, KeyPlace>& places) {
    std::ifstream in(path.c_str());
    std::string line;
    long no = 0;
    bool in_array = false;
    while (std::getline(in, line)) {
        ++no;
        if (in_array) {
            in_array = line.empty() || line[0] != '}';
            continue;
        }
        if (line.empty() || line[0] == '#')
            continue;
        if (line[0] == '[') {
            const std::string::size_type close = line.find(']', 1);
            scope = line.substr(1, close == std::string::npos ? std::string::npos : close - 1);
            continue;
        }
        const std::string::size_type eq = line.find('=');
        if (eq == std::string::npos || eq == 0)
            continue;
        std::string name = line.substr(0, eq);
        name.erase(name.find_last_not_of(' ') + 1);
        const std::string::size_type value = line.find_first_not_of(' ', eq + 1);
        if (value != std::string::npos && line[value] == '{') {
            in_array = true;
            continue;
        }
        places[scope + "::" + name] = KeyPlace{path, no};
    }
}

// Line number (from 1) of byte offset `pos` of `text`.
long line_of(const std::string& text, std::string::size_type pos) {
    long line = 1;
    for (std::string::size_type i = 0; i < pos && i < text.size(); ++i)
        line += text[i] == '\n';
    return line;
}

// After a reader's loop stopped on `in` (a stream over `text`): if anything but white space is left,
// the rows from there on are never read. `row_start` is where the last row began: a row cut short at
// the end of the file is not used either.
void report_stop(Report& rep, const std::string& path, const std::string& table, const std::string& text,
                 std::istream& in, std::streamoff row_start) {
    in.clear();
    std::streamoff at = in.tellg();
    if (at < 0)
        return;
    std::string::size_type pos = static_cast<std::string::size_type>(at);
    if (text.find_first_not_of(" \t\r\n", pos) == std::string::npos && row_start >= 0) {
        pos = static_cast<std::string::size_type>(row_start);
    } else {
        // A token that failed to parse may have lost its first characters to the failed extraction.
        while (pos > 0 && pos <= text.size() && text[pos - 1] != '\n' && text[pos - 1] != ' ' &&
               text[pos - 1] != '\t' && text[pos - 1] != '\r')
            --pos;
    }
    const std::string::size_type next = text.find_first_not_of(" \t\r\n", pos);
    if (next == std::string::npos)
        return;
    const long line = line_of(text, next);
    const long last = line_of(text, text.find_last_not_of(" \t\r\n"));
    rep.at(path, line,
           table + " reading stops at this row; " + std::to_string(last - line + 1) +
               " line(s) from here are not read");
}

std::string slurp(const std::string& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// A gene word as vesk matches it: printed name first, then the first name.
int match(const VarUniverse& u, const std::string& word) {
    const int id = VarUniverse::find(u.m_short_to_id, word);
    return id >= 0 ? id : VarUniverse::find(u.m_name_to_id, word);
}

bool writable(const std::string& path) {
    if (access(path.c_str(), F_OK) == 0)
        return access(path.c_str(), W_OK) == 0;
    const std::string::size_type slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    return access(dir.c_str(), W_OK | X_OK) == 0;
}

int check(int argc, char** argv) {
    // Findings reach the output even when a fatal of the readers ends the check.
    std::cout << std::unitbuf;
    Report rep;
    options opts;
    std::map<std::string, KeyPlace> places;
    std::string scope;
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i]);
        if (!file)
            rep.at(argv[i], 0, "option file cannot be opened; vesk reads it as empty");
        opts.read(file, false);
        place_keys(argv[i], scope, places);
    }
    auto where = [&](const char* sc, const char* key) {
        auto it = places.find(std::string(sc) + "::" + key);
        return it == places.end() ? KeyPlace{"", 0} : it->second;
    };
    // Carriage returns: harmless in numbers, fatal in paths, kept in every value.
    for (const auto& kv : opts.m_opt_values)
        if (kv.second.find('\r') != std::string::npos) {
            auto it = places.find(kv.first);
            const KeyPlace p = it == places.end() ? KeyPlace{"", 0} : it->second;
            rep.at(p.file, p.line,
                   "value of " + kv.first + " ends in a carriage return (DOS line end), kept by vesk");
        }

    const int seed = opts.get_int("Random", "Seed", true);
    (void)seed;
    const std::string varob = opts.get_str("Tables", "varob", true);
    const std::string chip = opts.get_str("Tables", "ChipOrfs", true);
    const std::string types = opts.get_str("Tables", "GoTypeTab", true);
    const std::string assoc = opts.get_str("Tables", "clsassoc", true);
    const std::string keys = opts.get_str("Tables", "goclskey", true);
    const std::string sets = opts.get_str("Tables", "SetsOrfs", true);
    const int boot = opts.get_int("Vesk", "BootstrapNum", true);
    const int min_size = opts.get_int("Vesk", "MinClsSize", true);
    const int max_size = opts.get_int("Vesk", "MaxClsSize", true);
    opts.get_int("Vesk", "MinClsInter", true);
    const float max_pv = opts.get_float("Vesk", "MaxPvToRep", true);
    opts.get_float("Vesk", "FilterRedPVThres", true);
    const std::string report = opts.get_str("Tables", "AnnotReport", true);

    if (boot < 0) {
        const KeyPlace p = where("Vesk", "BootstrapNum");
        rep.at(p.file, p.line, "BootstrapNum " + std::to_string(boot) + " is negative: no pass runs");
    }
    if (!(max_pv > 0.0f)) {
        const KeyPlace p = where("Vesk", "MaxPvToRep");
        rep.at(p.file, p.line, "MaxPvToRep is at or below 0: no class can be reported");
    }
    if (!writable(report)) {
        const KeyPlace p = where("Tables", "AnnotReport");
        rep.at(p.file, p.line,
               "report path " + report + " is not writable: vesk loses the report and exits 0");
    }

    // The tables, read as vesk reads them; each loop mirrors vesk's, then the rest is looked at.
    VarUniverse univ;
    {
        const std::string text = slurp(varob);
        std::ifstream in(varob.c_str());
        if (!in) {
            rep.at(varob, 0, "varob table cannot be opened (fatal in vesk)");
            return 1;
        }
        univ.read_short_tabs(in);
        std::istringstream again(text);
        int id;
        std::string a, b;
        std::streamoff start = 0;
        while ((start = again.tellg(), static_cast<bool>(again >> id >> a >> b))) {
        }
        report_stop(rep, varob, "varob", text, again, start);
    }
    const int n = univ.size();
    ds_bitvec mask(n);
    {
        std::ifstream in(chip.c_str());
        std::string word;
        while (in >> word) {
            const int id = match(univ, word);
            if (id >= 0)
                mask.set_ind(id);
        }
    }
    {
        const std::string text = slurp(types);
        std::istringstream in(text);
        std::string k, t;
        std::streamoff start = 0;
        while ((start = in.tellg(), static_cast<bool>(in >> k >> t))) {
        }
        report_stop(rep, types, "GoTypeTab", text, in, start);
    }
    VarClasses classes;
    {
        const std::string text = slurp(keys);
        if (!text.empty() && text.find('\t') == std::string::npos)
            rep.at(keys, 1, "class key table has no tabs: its keys and names run into each other");
        std::istringstream in(text);
        int id, ignored;
        std::string lead, key, name;
        while (in >> id) {
            std::getline(in, lead, '\t');
            std::getline(in, key, '\t');
            std::getline(in, name, '\t');
            in >> ignored;
        }
        report_stop(rep, keys, "goclskey", text, in, -1);
        const std::string atext = slurp(assoc);
        std::istringstream ain(atext);
        int c, v;
        std::streamoff astart = 0;
        while ((astart = ain.tellg(), static_cast<bool>(ain >> c >> v))) {
        }
        report_stop(rep, assoc, "clsassoc", atext, ain, astart);
        if (!classes.read(keys, assoc, n, &mask))
            rep.at(keys, 0, "class tables cannot be opened: vesk runs with no classes");
    }
    {
        int real = 0, outside = 0;
        for (std::size_t c = 0; c < classes.m_class_bits.size(); ++c) {
            if (classes.m_class_keys[c].empty())
                continue; // a hole in the key table's ids
            const int size = classes.m_class_bits[c].on_bits();
            ++real;
            outside += size < min_size || size > max_size;
        }
        if (outside > 0 && outside == real) {
            const KeyPlace p = where("Vesk", "MinClsSize");
            rep.at(p.file, p.line,
                   "no class has a chip size within MinClsSize ... MaxClsSize: the report stays empty");
        } else if (outside > 0) {
            rep.note(
                keys, 0,
                std::to_string(outside) +
                    " class(es) have a chip size outside MinClsSize ... MaxClsSize and are never tested");
        }
    }
    {
        const std::string text = slurp(sets);
        {
            // vesk's own reader first: its fatals end the check as they end the run.
            std::istringstream first(text);
            std::vector<std::vector<int>> read_sets;
            read_gene_sets(first, univ, read_sets);
        }
        std::istringstream in(text);
        std::string word;
        int set_id;
        std::streamoff start = 0;
        while ((start = in.tellg(), static_cast<bool>(in >> word >> set_id))) {
            const int g = match(univ, word);
            if (g >= 0 && !mask.get_ind(g))
                rep.note(sets, line_of(text, static_cast<std::string::size_type>(in.tellg())),
                         "set member " + word +
                             " is not on the chip: it counts in the set's size, never in an overlap");
        }
        report_stop(rep, sets, "SetsOrfs", text, in, start);
    }
    std::cout << (rep.findings == 0 ? "vesk would use every row\n"
                                    : std::to_string(rep.findings) + " finding(s)\n");
    return rep.findings == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h") {
        (argc < 2 ? std::cerr : std::cout) << kUsage;
        return argc < 2 ? 2 : 0;
    }
    return check(argc, argv);
}
