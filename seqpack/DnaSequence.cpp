// DNA sequences: FASTA bodies into letters and into packed words; plain pattern matching on letters.
#include "DnaSequence.h"

namespace {
// Reads the rest of a line (the line end dropped, and a carriage return before it).
void read_line_rest(std::istream& in, std::string& line) {
    std::getline(in, line);
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
}
} // namespace

void DnaSequence::read_fasta(std::istream& in) {
    clear();
    std::string line;
    char c;
    while (in.get(c)) {
        if (c == '>')
            break;
        if (c == '\n' || c == '\r')
            continue;
        push_back(c);
        read_line_rest(in, line);
        append(line);
    }
}

void DnaDenseSequence::read_fasta(std::istream& in) {
    m_words.clear();
    m_length = 0;
    char buf[8];
    int fill = 0;
    std::string line;
    char c;
    // The first letter of each line comes by >>, which skips blank lines and leading blanks.
    while (in >> c) {
        if (c == '>')
            break;
        read_line_rest(in, line);
        line.insert(line.begin(), c);
        for (char l : line) {
            buf[fill++] = l;
            ++m_length;
            if (fill == 8) {
                m_words.emplace_back();
                m_words.back().read(buf);
                fill = 0;
            }
        }
    }
    if (fill > 0) {
        for (int i = fill; i < 8; ++i)
            buf[i] = '0';
        m_words.emplace_back();
        m_words.back().read(buf);
    }
}

bool dnapat_match(const std::string& pat, std::string::const_iterator pos) {
    for (char p : pat) {
        if (p != '*' && p != *pos)
            return false;
        ++pos;
    }
    return true;
}

int count_dnapat_match(std::string::const_iterator first, std::string::const_iterator last,
                       const std::string& pat) {
    std::string expanded;
    for (char p : pat) {
        if (p >= '0' && p <= '9')
            expanded.append(static_cast<std::size_t>(p - '0'), '*');
        else
            expanded.push_back(p);
    }
    int count = 0;
    for (std::string::const_iterator start = first; start != last; ++start) {
        std::string::const_iterator pos = start;
        bool fits = true;
        for (char p : expanded) {
            if (pos + 1 == last || (p != '*' && p != *pos)) {
                fits = false;
                break;
            }
            ++pos;
        }
        if (fits)
            ++count;
    }
    return count;
}

int count_dnapat_match(const std::string& seq, const std::string& pat) {
    return count_dnapat_match(seq.begin(), seq.end(), pat);
}
