// split_line() and count_match().
#include "strutil.h"

void split_line(std::istream& in, std::vector<std::string>& fields, char sep) {
    fields.clear();
    std::string current;
    while (in.good()) {
        int c = in.get();
        if (c == std::char_traits<char>::eof())
            return;
        if (c == '\r')
            continue;
        if (c == '\n') {
            fields.push_back(current);
            return;
        }
        if (c == static_cast<unsigned char>(sep)) {
            fields.push_back(current);
            current.clear();
        } else {
            current += static_cast<char>(c);
        }
    }
}

int count_match(const std::string& text, const std::string& pattern) {
    int n = 0;
    std::string::size_type pos = text.find(pattern);
    while (pos != std::string::npos) {
        ++n;
        pos = text.find(pattern, pos + 1);
    }
    return n;
}
