// DnaSeqPattern: letter-branch patterns and matching; template patterns and their iterators;
// pattern comparison by containment and distance.
#include "DnaSeqPattern.h"

#include "error.h"

#include <algorithm>
#include <iostream>

static constexpr char kSrc[] = "DnaSeqPattern";

int letter_bit(char c) {
    switch (c) {
    case 'A':
        return 1;
    case 'G':
        return 2;
    case 'C':
        return 4;
    case 'T':
        return 8;
    case '-':
        return 16;
    default:
        return 0;
    }
}

namespace {
std::string expand_digits(const std::string& s) {
    std::string out;
    for (char c : s) {
        if (c >= '0' && c <= '@')
            out.append(static_cast<std::size_t>(c - '0'), '*');
        else
            out.push_back(c);
    }
    return out;
}
} // namespace

void DnaSeqPattern::init_str(const std::string& s) {
    m_chars.clear();
    m_str.clear();
    for (char c : s) {
        if (c >= '0' && c <= '@') {
            for (int n = 0; n < c - '0'; ++n)
                push_back(DnaSeqDegChar(15));
        } else {
            push_back(c);
        }
    }
}

int DnaSeqPattern::start_end(int n) const {
    const unsigned to = static_cast<unsigned>(m_to_range);
    const int last = static_cast<unsigned>(n) < to ? n - length() : m_to_range - length();
    return last + 1;
}

bool DnaSeqPattern::match_prefix(iterator it, int* mismatches) const {
    int miss = 0;
    for (const DnaSeqDegChar& c : m_chars) {
        const int bit = letter_bit(*it++);
        if ((bit & c.m_val) == 0) {
            ++miss;
            if (miss > m_mismatches) {
                *mismatches = miss;
                return false;
            }
        }
    }
    *mismatches = miss;
    return true;
}

bool DnaSeqPattern::match_prefix(iterator it) const {
    int miss;
    return match_prefix(it, &miss);
}

DnaSeqPattern::iterator DnaSeqPattern::match_from(const std::string& text, iterator pos) const {
    const int end = start_end(static_cast<int>(text.size()));
    int s = static_cast<int>(pos - text.begin());
    if (s < m_from_range)
        s = m_from_range;
    for (; s < end; ++s)
        if (match_prefix(text.begin() + s))
            return text.begin() + s;
    return text.end();
}

bool DnaSeqPattern::match(const std::string& text) const {
    return match_from(text, text.begin()) != text.end();
}

int DnaSeqPattern::match_count(const std::string& text) const {
    int count = 0;
    const int end = start_end(static_cast<int>(text.size()));
    for (int s = std::max(0, m_from_range); s < end; ++s)
        if (match_prefix(text.begin() + s))
            ++count;
    return count;
}

void DnaSeqPattern::add_deg_char(int pos, DnaSeqDegChar c) {
    set_deg_char(pos, DnaSeqDegChar(m_chars[pos].m_val | c.m_val));
}

void DnaSeqPattern::del_deg_char(int pos, DnaSeqDegChar c) {
    set_deg_char(pos, DnaSeqDegChar(static_cast<unsigned char>(m_chars[pos].m_val & ~c.m_val)));
}

void DnaSeqPattern::set_deg_char(int pos, DnaSeqDegChar c) {
    m_chars[pos] = c;
    m_str[pos] = c.get_char_encoding();
}

void DnaSeqPattern::push_back(DnaSeqDegChar c) {
    m_chars.push_back(c);
    m_str.push_back(c.get_char_encoding());
}

void DnaSeqPattern::push_back(char c) {
    DnaSeqDegChar v;
    v.set_char_encoding(c);
    m_chars.push_back(v);
    m_str.push_back(c);
}

void DnaSeqPattern::push_front(DnaSeqDegChar c) {
    m_chars.insert(m_chars.begin(), c);
    m_str.insert(m_str.begin(), c.get_char_encoding());
}

void DnaSeqPattern::push_front(char c) {
    DnaSeqDegChar v;
    v.set_char_encoding(c);
    m_chars.insert(m_chars.begin(), v);
    m_str.insert(m_str.begin(), c);
}

DnaSeqDegChar DnaSeqPattern::pop_back() {
    const DnaSeqDegChar out = m_chars.back();
    m_chars.pop_back();
    m_str.pop_back();
    return out;
}

DnaSeqDegChar DnaSeqPattern::pop_front() {
    const DnaSeqDegChar out = m_chars.front();
    m_chars.erase(m_chars.begin());
    m_str.erase(m_str.begin());
    return out;
}

void DnaSeqPattern::get_prefix(std::string& out, int k) const {
    out = std::string(m_str, 0, static_cast<std::size_t>(k));
}

void DnaSeqPattern::get_prefix(DnaSeqPattern& out, int k) const {
    out = *this;
    const std::size_t n = std::min(static_cast<std::size_t>(k), m_chars.size());
    out.m_chars.resize(n);
    out.m_str.resize(n);
}

void DnaSeqPattern::get_suffix(std::string& out, int k) const {
    const int start = std::max(0, length() - k);
    out = std::string(m_str, static_cast<std::size_t>(start));
}

void DnaSeqPattern::get_suffix(DnaSeqPattern& out, int k) const {
    const int start = std::max(0, length() - k);
    out = *this;
    out.m_chars.erase(out.m_chars.begin(), out.m_chars.begin() + start);
    out.m_str.erase(0, static_cast<std::size_t>(start));
}

void DnaSeqPattern::get_kernel_substr(int pos, DnaSeqDegChar c, std::string& out, int k) const {
    int start = pos - k / 2;
    if (start + k >= length())
        start = length() - k - 1;
    if (start < 0)
        start = 0;
    out = std::string(m_str, static_cast<std::size_t>(start), static_cast<std::size_t>(k));
    if (pos - start < static_cast<int>(out.size()))
        out[static_cast<std::size_t>(pos - start)] = c.get_char_encoding();
}

std::ostream& operator<<(std::ostream& out, const DnaSeqPattern& pat) { return out << pat.get_str(); }

void DnaSeqTemplatePattern::read(std::istream& in) {
    clear();
    char c;
    while (in.get(c)) {
        if (c == '\n' && empty())
            continue;
        if (c == ';')
            return;
        if (c >= '1' && c <= '3')
            push_back(static_cast<unsigned char>(c - '0'));
        else if (c == '*')
            push_back(4);
        else
            VESK_FATAL(kSrc, "Bad pattern template char = " << c);
    }
}

void DnaSeqTemplatePattern::write(std::ostream& out) const {
    for (unsigned char d : *this)
        out << (d == 4 ? '*' : static_cast<char>('0' + d));
    out << ';';
}

void DnaSeqAlphabethIter::settle() {
    const std::vector<DnaSeqDegChar>& list = (*m_alpha)[static_cast<std::size_t>(m_degree)];
    while (m_index < m_len && (list[static_cast<std::size_t>(m_index)].m_val & m_base) == 0)
        ++m_index;
    m_valid = m_index < m_len;
    if (m_valid)
        m_cur = list[static_cast<std::size_t>(m_index)];
}

void DnaSeqAlphabethIter::restart(int degree, int base) {
    m_degree = degree;
    m_base = base;
    m_index = 0;
    m_len = static_cast<int>((*m_alpha)[static_cast<std::size_t>(degree)].size());
    settle();
}

DnaSeqAlphabethIter& DnaSeqAlphabethIter::operator++() {
    ++m_index;
    settle();
    return *this;
}

void DnaSeqTemplatePatternIter::restart(const char* kmer, const DnaSeqTemplatePattern& templ) {
    m_degrees.assign(templ.begin(), templ.end());
    m_bases.clear();
    for (std::size_t i = 0; i < templ.size(); ++i) {
        int base = 0;
        switch (kmer[i]) {
        case 'A':
            base = 1;
            break;
        case 'C':
            base = 4;
            break;
        case 'G':
            base = 2;
            break;
        case 'T':
            base = 8;
            break;
        default:
            std::cerr << "ERROR, set to DNA char " << kmer[i] << std::endl;
        }
        m_bases.push_back(base);
    }
    m_iters.assign(templ.size(), DnaSeqAlphabethIter(m_alpha));
    first();
}

void DnaSeqTemplatePatternIter::first() {
    m_valid = true;
    for (std::size_t i = 0; i < m_iters.size(); ++i) {
        m_iters[i].restart(m_degrees[i], m_bases[i]);
        m_valid = m_valid && m_iters[i].is_valid();
    }
}

DnaSeqTemplatePatternIter& DnaSeqTemplatePatternIter::operator++() {
    if (!m_valid)
        return *this;
    for (int i = static_cast<int>(m_iters.size()) - 1; i >= 0; --i) {
        ++m_iters[static_cast<std::size_t>(i)];
        if (m_iters[static_cast<std::size_t>(i)].is_valid())
            return *this;
        m_iters[static_cast<std::size_t>(i)].restart(m_degrees[static_cast<std::size_t>(i)],
                                                     m_bases[static_cast<std::size_t>(i)]);
    }
    m_valid = false;
    return *this;
}

std::string DnaSeqTemplatePatternIter::get_str() const {
    std::string out;
    for (const DnaSeqAlphabethIter& it : m_iters)
        out.push_back((*it).get_char_encoding());
    return out;
}

bool is_subpat(const std::string& a, int af, int at, const std::string& b, int bf, int bt) {
    if (af < bf || at > bt)
        return false;
    if (a.size() > b.size())
        return false;
    for (std::size_t o = 0; o + a.size() <= b.size(); ++o) {
        bool fits = true;
        for (std::size_t i = 0; i < a.size() && fits; ++i) {
            if (a[i] == b[o + i])
                continue;
            DnaSeqDegChar ca, cb;
            ca.set_char_encoding(a[i]);
            cb.set_char_encoding(b[o + i]);
            fits = (cb.m_val & ~ca.m_val) == 0;
        }
        if (fits)
            return true;
    }
    return false;
}

bool is_subpat(Dna8MerPattern& a, Dna8MerPattern& b) {
    return is_subpat(a.m_str, a.m_from_range, a.m_to_range, b.m_str, b.m_from_range, b.m_to_range);
}

float calc_dist(const std::string& a, int af, int at, const std::string& b, int bf, int bt) {
    const std::string pb = "****" + b + "****";
    int best = 0;
    for (std::size_t o = 0; o + a.size() <= pb.size(); ++o) {
        int same = 0;
        for (std::size_t i = 0; i < a.size(); ++i)
            same += a[i] == pb[o + i];
        best = std::max(best, same);
    }
    float d = static_cast<float>(std::min(a.size(), b.size())) - static_cast<float>(best);
    const bool a_in_b = af >= bf && at <= bt;
    const bool b_in_a = bf >= af && bt <= at;
    if (!a_in_b && !b_in_a)
        d += (af <= bt && bf <= at) ? 1.0f : 10.0f;
    return d;
}

float calc_dist(Dna8MerPattern& a, Dna8MerPattern& b) {
    return calc_dist(a.m_str, a.m_from_range, a.m_to_range, b.m_str, b.m_from_range, b.m_to_range);
}

int no_gap_dist(const std::string& a0, const std::string& b0) {
    const std::string a = expand_digits(a0), b = expand_digits(b0);
    const int la = static_cast<int>(a.size()), lb = static_cast<int>(b.size());
    int best_d = la + lb + 1, best_offset = 0;
    // Offset: where b starts relative to a.
    for (int off = -(lb - 1); off <= la - 1; ++off) {
        int d = 0;
        for (int i = std::min(0, off); i < std::max(la, off + lb); ++i) {
            const bool in_a = i >= 0 && i < la, in_b = i - off >= 0 && i - off < lb;
            if (!in_a || !in_b || a[static_cast<std::size_t>(i)] != b[static_cast<std::size_t>(i - off)])
                ++d;
        }
        if (d < best_d) {
            best_d = d;
            best_offset = off;
        }
    }
    std::cerr << "best_d = " << best_d << "\n"
              << "best_offset = " << best_offset << std::endl;
    return best_d;
}
