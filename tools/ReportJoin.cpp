// join_report, write_named_report and write_dot_plot.
#include "ReportJoin.h"

#include "GoImport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>

namespace {

std::vector<std::string> split_tabs(const std::string& line) {
    std::vector<std::string> out;
    std::istringstream in(line);
    std::string f;
    while (std::getline(in, f, '\t'))
        out.push_back(f);
    if (!line.empty() && line.back() == '\t')
        out.push_back(std::string());
    return out;
}

bool parse_int(const std::string& s, int& v) {
    if (s.empty())
        return false;
    char* end = nullptr;
    const long x = std::strtol(s.c_str(), &end, 10);
    if (*end != '\0' || x < 0 || x > 2147483647L)
        return false;
    v = static_cast<int>(x);
    return true;
}

// Reads a headed name table (id TAB name [TAB more]) into `out`, keyed by its first column.
bool read_names(const std::string& path, int min_cols, std::map<std::string, std::vector<std::string>>& out,
                std::string& err) {
    LineSource in;
    if (!in.open(path, err))
        return false;
    std::string line;
    bool header = true;
    while (in.next(line)) {
        if (header) {
            header = false;
            continue;
        }
        if (line.empty())
            continue;
        std::vector<std::string> col = split_tabs(line);
        if (static_cast<int>(col.size()) < min_cols) {
            err = in.error("expected " + std::to_string(min_cols) + " tab-separated columns");
            return false;
        }
        const std::string key = col[0];
        out[key] = col;
    }
    return in.ended_cleanly(err);
}

std::string xml(const std::string& s) {
    std::string o;
    for (char c : s) {
        switch (c) {
        case '&':
            o += "&amp;";
            break;
        case '<':
            o += "&lt;";
            break;
        case '>':
            o += "&gt;";
            break;
        case '"':
            o += "&quot;";
            break;
        default:
            o += c;
        }
    }
    return o;
}

std::string fmt(double v, int decimals) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return buf;
}

const char* ns_colour(const std::string& ns) {
    if (ns == "biological_process")
        return "#1b9e77";
    if (ns == "molecular_function")
        return "#d95f02";
    if (ns == "cellular_component")
        return "#7570b3";
    return "#777777";
}

} // namespace

bool join_report(const std::string& report, const std::string& names_dir, std::vector<NamedReportRow>& rows,
                 std::string& err) {
    std::map<std::string, std::vector<std::string>> set_names, terms;
    if (!read_names(names_dir + "/set_names.tsv", 2, set_names, err) ||
        !read_names(names_dir + "/terms.tsv", 3, terms, err))
        return false;
    LineSource in;
    if (!in.open(report, err))
        return false;
    std::string line;
    while (in.next(line)) {
        if (line.empty())
            continue;
        const std::vector<std::string> col = split_tabs(line);
        if (col.size() < 8) {
            err = in.error("expected at least 8 tab-separated columns of a vesk report, found " +
                           std::to_string(col.size()));
            return false;
        }
        NamedReportRow r;
        if (!parse_int(col[0], r.set_id)) {
            err = in.error("expected a set id in column 1");
            return false;
        }
        auto set = set_names.find(col[0]);
        if (set == set_names.end()) {
            err = in.error("expected a set id of " + names_dir + "/set_names.tsv in column 1");
            return false;
        }
        r.set_name = set->second[1];
        r.term_id = col[6];
        auto term = terms.find(col[6]);
        r.term_name = term == terms.end() ? col[1] : term->second[1];
        r.ns = term == terms.end() ? "NA" : term->second[2];
        r.log10_p = col[2];
        r.log10_corrected_p = col[3];
        r.fraction = col[4];
        r.overlap = col[5];
        rows.push_back(r);
    }
    return in.ended_cleanly(err);
}

void write_named_report(std::ostream& out, const std::vector<NamedReportRow>& rows) {
    out << "set_name\tterm_id\tterm_name\tnamespace\toverlap\tfraction\tlog10_p\tlog10_corrected_p\n";
    for (const NamedReportRow& r : rows)
        out << r.set_name << '\t' << r.term_id << '\t' << r.term_name << '\t' << r.ns << '\t' << r.overlap
            << '\t' << r.fraction << '\t' << r.log10_p << '\t' << r.log10_corrected_p << '\n';
}

void write_dot_plot(std::ostream& out, const std::vector<NamedReportRow>& rows, int top_terms, int max_sets) {
    // Each set's rows in report order, and its best log10 p.
    std::map<int, std::vector<const NamedReportRow*>> by_set;
    for (const NamedReportRow& r : rows)
        by_set[r.set_id].push_back(&r);
    std::vector<std::pair<double, int>> order;
    for (const auto& s : by_set) {
        double best = 0.0;
        for (const NamedReportRow* r : s.second)
            best = std::min(best, std::atof(r->log10_p.c_str()));
        order.emplace_back(best, s.first);
    }
    std::sort(order.begin(), order.end());
    if (static_cast<int>(order.size()) > max_sets)
        order.resize(std::max(max_sets, 0));

    std::vector<const NamedReportRow*> shown;
    double x_max = 1.0;
    int max_overlap = 1;
    for (const auto& o : order) {
        const std::vector<const NamedReportRow*>& list = by_set[o.second];
        for (int i = 0; i < static_cast<int>(list.size()) && i < top_terms; ++i) {
            shown.push_back(list[i]);
            x_max = std::max(x_max, -std::atof(list[i]->log10_p.c_str()));
            max_overlap = std::max(max_overlap, std::atoi(list[i]->overlap.c_str()));
        }
    }
    // Axis end and tick step: 1, 2 or 5 times a power of ten, about five ticks.
    const double raw = x_max / 5.0;
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    const double step = raw / mag <= 1 ? mag : raw / mag <= 2 ? 2 * mag : raw / mag <= 5 ? 5 * mag : 10 * mag;
    const double axis_end = std::ceil(x_max / step) * step;

    const int label_w = 380, plot_w = 420, legend_w = 190, row_h = 18, head_h = 22, top = 40;
    const int width = label_w + plot_w + legend_w;
    int height = top + 50;
    for (const auto& o : order)
        height += head_h + row_h * std::min(top_terms, static_cast<int>(by_set[o.second].size()));
    height = std::max(height, top + 200);
    auto x_of = [&](double v) { return label_w + plot_w * v / axis_end; };
    auto r_of = [&](int overlap) {
        return 2.0 + 8.0 * std::sqrt(static_cast<double>(overlap) / max_overlap);
    };

    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
        << "\" font-family=\"sans-serif\" font-size=\"12\">\n";
    out << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    out << "<text x=\"10\" y=\"22\" font-size=\"15\" font-weight=\"bold\">Top terms per gene set</text>\n";
    int y = top;
    for (const auto& o : order) {
        const std::vector<const NamedReportRow*>& list = by_set[o.second];
        y += head_h;
        out << "<text x=\"10\" y=\"" << y - 6 << "\" font-weight=\"bold\">" << xml(list.front()->set_name)
            << "</text>\n";
        out << "<line x1=\"10\" x2=\"" << label_w + plot_w << "\" y1=\"" << y - 2 << "\" y2=\"" << y - 2
            << "\" stroke=\"#dddddd\"/>\n";
        for (int i = 0; i < static_cast<int>(list.size()) && i < top_terms; ++i) {
            const NamedReportRow& r = *list[i];
            const double cy = y + row_h / 2.0;
            std::string label = r.term_name;
            if (label.size() > 52)
                label = label.substr(0, 50) + "...";
            out << "<text x=\"24\" y=\"" << fmt(cy + 4, 1) << "\">" << xml(label) << "</text>\n";
            out << "<circle cx=\"" << fmt(x_of(-std::atof(r.log10_p.c_str())), 1) << "\" cy=\"" << fmt(cy, 1)
                << "\" r=\"" << fmt(r_of(std::atoi(r.overlap.c_str())), 2) << "\" fill=\"" << ns_colour(r.ns)
                << "\" fill-opacity=\"0.8\"><title>" << xml(r.term_id) << " overlap " << xml(r.overlap)
                << " log10 p " << xml(r.log10_p) << "</title></circle>\n";
            y += row_h;
        }
    }
    // Axis.
    const int axis_y = y + 8;
    out << "<line x1=\"" << label_w << "\" x2=\"" << label_w + plot_w << "\" y1=\"" << axis_y << "\" y2=\""
        << axis_y << "\" stroke=\"black\"/>\n";
    for (double t = 0; t <= axis_end + step / 2; t += step) {
        const double x = x_of(t);
        out << "<line x1=\"" << fmt(x, 1) << "\" x2=\"" << fmt(x, 1) << "\" y1=\"" << axis_y << "\" y2=\""
            << axis_y + 4 << "\" stroke=\"black\"/>\n";
        out << "<text x=\"" << fmt(x, 1) << "\" y=\"" << axis_y + 16 << "\" text-anchor=\"middle\">"
            << fmt(t, step < 1 ? 1 : 0) << "</text>\n";
    }
    out << "<text x=\"" << label_w + plot_w / 2 << "\" y=\"" << axis_y + 32
        << "\" text-anchor=\"middle\">-log10 p</text>\n";
    // Legend.
    const int lx = label_w + plot_w + 20;
    int ly = top + 10;
    out << "<text x=\"" << lx << "\" y=\"" << ly << "\" font-weight=\"bold\">namespace</text>\n";
    const char* names[] = {"biological_process", "molecular_function", "cellular_component"};
    for (const char* n : names) {
        ly += 18;
        out << "<circle cx=\"" << lx + 6 << "\" cy=\"" << ly - 4 << "\" r=\"6\" fill=\"" << ns_colour(n)
            << "\"/><text x=\"" << lx + 18 << "\" y=\"" << ly << "\">" << n << "</text>\n";
    }
    ly += 30;
    out << "<text x=\"" << lx << "\" y=\"" << ly << "\" font-weight=\"bold\">overlap</text>\n";
    for (int k : {1, std::max(1, max_overlap / 2), max_overlap}) {
        ly += 24;
        out << "<circle cx=\"" << lx + 10 << "\" cy=\"" << ly - 4 << "\" r=\"" << fmt(r_of(k), 2)
            << "\" fill=\"#999999\"/><text x=\"" << lx + 26 << "\" y=\"" << ly << "\">" << k << "</text>\n";
    }
    out << "</svg>\n";
}
