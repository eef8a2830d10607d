// Dna8MerPattern: building and editing the eight phase versions, and matching dense sequences.
#include "Dna8MerPattern.h"

#include <iostream>

namespace {
typedef DnaDegChar8Mer::word_type word_t;

int seq_pos(const DnaDenseSequence& seq, DnaDenseSeqCharIter it) {
    return static_cast<int>(it.m_word - seq.m_words.data()) * 8 + it.m_nibble;
}

int popcount_word(word_t w) {
    return DnaDegChar8Mer::ones[w & 255u] + DnaDegChar8Mer::ones[(w >> 8) & 255u] +
           DnaDegChar8Mer::ones[(w >> 16) & 255u] + DnaDegChar8Mer::ones[(w >> 24) & 255u];
}

// The base of a letter, with the complaint for other letters.
DnaSeqDegChar letter_base(char c) {
    const DnaSeqChar b = DnaSeqChar::from_letter(c);
    if (b.m_val == 0)
        std::cerr << "ERROR, set to DNA char " << c << std::endl;
    return DnaSeqDegChar(b.m_val);
}
} // namespace

Dna8MerPattern::Dna8MerPattern() : m_to_range(-1), m_from_range(0), m_mismatches(0) {
    for (int p = 1; p < 8; ++p)
        m_phase[p].assign(1, DnaDegChar8Mer(0));
}

void Dna8MerPattern::append_pos(char text, unsigned comp) {
    const int i = length();
    m_str.push_back(text);
    for (int p = 0; p < 8; ++p) {
        const int nib = (i + p) % 8;
        const std::size_t word = static_cast<std::size_t>((i + p) / 8);
        if (word >= m_phase[p].size())
            m_phase[p].push_back(DnaDegChar8Mer(0));
        word_t& w = m_phase[p][word].m_word;
        w &= ~(word_t(15) << (4 * nib));
        w |= word_t(comp) << (4 * nib); // a fifth bit spills into the next nibble (lost at the top)
    }
}

void Dna8MerPattern::init_str(const std::string& s) {
    m_str.clear();
    m_phase[0].clear();
    for (int p = 1; p < 8; ++p)
        m_phase[p].assign(1, DnaDegChar8Mer(0));
    for (char c : s) {
        if (c >= '0' && c <= '@') {
            for (int n = 0; n < c - '0'; ++n)
                append_pos('*', 0u);
        } else {
            append_pos(c, ~static_cast<unsigned>(DnaDegChar8Mer::decode_letter(c)) & 15u);
        }
    }
}

int Dna8MerPattern::get_nibble(int phase, int pos) const {
    return m_phase[phase][static_cast<std::size_t>((pos + phase) / 8)].get_nibble((pos + phase) % 8);
}

DnaSeqDegChar Dna8MerPattern::get_deg_char(int pos) const {
    return DnaSeqDegChar(static_cast<unsigned char>(~get_nibble(0, pos) & 31));
}

void Dna8MerPattern::set_text_from_nibble(int pos) { m_str[pos] = get_deg_char(pos).get_char_encoding(); }

void Dna8MerPattern::add_deg_char(int pos, DnaSeqDegChar c) {
    for (int p = 0; p < 8; ++p)
        m_phase[p][static_cast<std::size_t>((pos + p) / 8)].m_word &=
            ~(word_t(c.m_val & 15) << (4 * ((pos + p) % 8)));
    set_text_from_nibble(pos);
}

void Dna8MerPattern::del_deg_char(int pos, DnaSeqDegChar c) {
    for (int p = 0; p < 8; ++p)
        m_phase[p][static_cast<std::size_t>((pos + p) / 8)].m_word |= word_t(c.m_val & 15)
                                                                      << (4 * ((pos + p) % 8));
    set_text_from_nibble(pos);
}

void Dna8MerPattern::set_deg_char(int pos, DnaSeqDegChar c) {
    m_str[pos] = c.get_char_encoding();
    for (int p = 0; p < 8; ++p) {
        const int nib = (pos + p) % 8;
        word_t& w = m_phase[p][static_cast<std::size_t>((pos + p) / 8)].m_word;
        w &= ~(word_t(15) << (4 * nib));
        w |= word_t(~c.m_val & 31u) << (4 * nib);
    }
}

void Dna8MerPattern::push_back(char c) {
    DnaSeqDegChar v;
    v.set_char_encoding(c);
    append_pos(c, ~static_cast<unsigned>(v.m_val) & 31u);
}

void Dna8MerPattern::push_back(DnaSeqDegChar c) {
    append_pos(c.get_char_encoding(), ~static_cast<unsigned>(c.m_val) & 31u);
}

void Dna8MerPattern::push_front(DnaSeqDegChar c) {
    m_str.insert(m_str.begin(), '*');
    std::vector<DnaDegChar8Mer> saved;
    saved.swap(m_phase[0]);
    for (int p = 0; p < 7; ++p)
        m_phase[p].swap(m_phase[p + 1]);
    saved.insert(saved.begin(), DnaDegChar8Mer(0));
    m_phase[7].swap(saved);
    // The new nibble is 0 in every version, so this widens nothing: the position accepts all bases.
    add_deg_char(0, c);
}

void Dna8MerPattern::push_front(char c) { push_front(letter_base(c)); }

DnaSeqDegChar Dna8MerPattern::pop_back() {
    const int i = length() - 1;
    const DnaSeqDegChar out = get_deg_char(i);
    m_str.pop_back();
    for (int p = 0; p < 8; ++p) {
        const int nib = (i + p) % 8;
        if (nib == 0)
            m_phase[p].pop_back();
        else
            m_phase[p][static_cast<std::size_t>((i + p) / 8)].m_word &= ~(word_t(15) << (4 * nib));
    }
    return out;
}

DnaSeqDegChar Dna8MerPattern::pop_front() {
    // Position 0 lies in the top nibble of the first word of version 7; dropping that word makes
    // version 7 the new version 0, and each other version moves up one phase with position 0 cleared.
    std::vector<DnaDegChar8Mer> saved;
    saved.swap(m_phase[7]);
    const DnaSeqDegChar out(static_cast<unsigned char>(~saved[0].get_nibble(7) & 31));
    for (int p = 7; p >= 1; --p) {
        m_phase[p].swap(m_phase[p - 1]);
        m_phase[p][0].set_nibble(p - 1, ~DnaDegChar8Mer::decode_letter('*') & 15);
    }
    saved.erase(saved.begin());
    m_phase[0].swap(saved);
    m_str.erase(m_str.begin());
    return out;
}

bool Dna8MerPattern::fits(int phase, const DnaDegChar8Mer* word) const {
    const std::vector<DnaDegChar8Mer>& v = m_phase[phase];
    if (m_mismatches == 0) {
        for (std::size_t j = 0; j < v.size(); ++j)
            if (word[j].m_word & v[j].m_word)
                return false;
        return true;
    }
    return bad_bits(phase, word, m_mismatches + 1) <= m_mismatches;
}

int Dna8MerPattern::bad_bits(int phase, const DnaDegChar8Mer* word, int cut) const {
    const std::vector<DnaDegChar8Mer>& v = m_phase[phase];
    int bad = 0;
    for (std::size_t j = 0; j < v.size() && bad < cut; ++j)
        bad += popcount_word(word[j].m_word & v[j].m_word);
    return bad;
}

int Dna8MerPattern::match_prefix(const DnaDegChar8Mer* word, int from_phase, int to_phase) const {
    for (int p = from_phase; p < to_phase; ++p)
        if (fits(p, word))
            return p;
    return -1;
}

namespace {
// The window of starts [first, limit) of a pattern of length `len` in `seq`.
int start_limit(const DnaDenseSequence& seq, int len, int to_range) {
    int limit = seq.m_length - len - 1;
    if (to_range != -1 && seq.m_length >= to_range + len)
        limit = to_range - len + 1;
    return limit;
}
} // namespace

DnaDenseSeqCharIter Dna8MerPattern::match_from(const DnaDenseSequence& seq, DnaDenseSeqCharIter pos) const {
    if (seq.m_words.empty())
        return seq.end();
    const int limit = start_limit(seq, length(), m_to_range);
    int start = seq_pos(seq, pos);
    if (start < m_from_range)
        start = m_from_range;
    if (start >= limit)
        return seq.end();
    const DnaDegChar8Mer* words = seq.m_words.data();
    const int w0 = start / 8, wl = limit / 8, nl = limit % 8;
    if (w0 == wl) {
        const int r = match_prefix(words + w0, start % 8, nl);
        return r >= 0 ? DnaDenseSeqCharIter(words + w0, r) : seq.end();
    }
    int r = match_prefix(words + w0, start % 8, 8);
    if (r >= 0)
        return DnaDenseSeqCharIter(words + w0, r);
    for (int w = w0 + 1; w < wl; ++w) {
        r = match_prefix(words + w, 0, 8);
        if (r >= 0)
            return DnaDenseSeqCharIter(words + w, r);
    }
    r = match_prefix(words + wl, 0, nl);
    return r >= 0 ? DnaDenseSeqCharIter(words + wl, r) : seq.end();
}

bool Dna8MerPattern::match(const DnaDenseSequence& seq) const {
    return match_from(seq, seq.begin()) < seq.end();
}

void Dna8MerPattern::best_match_prefix(const DnaDegChar8Mer* word, int from_phase, int to_phase, int& best,
                                       int& best_phase) const {
    for (int p = from_phase; p < to_phase; ++p) {
        const int score = length() - bad_bits(p, word, length());
        if (score > best) {
            best = score;
            best_phase = p;
        }
    }
}

int Dna8MerPattern::best_match(const DnaDenseSequence& seq, int* pos) const {
    int best = -1;
    *pos = -1;
    if (seq.m_words.empty())
        return best;
    const int limit = start_limit(seq, length(), m_to_range);
    for (int s = m_from_range < 0 ? 0 : m_from_range; s < limit; ++s) {
        int phase = -1;
        const int before = best;
        best_match_prefix(seq.m_words.data() + s / 8, s % 8, s % 8 + 1, best, phase);
        if (best > before)
            *pos = s;
    }
    return best;
}

void Dna8MerPattern::get_prefix(std::string& out, int k) const {
    out = std::string(m_str, 0, static_cast<std::size_t>(k));
}

void Dna8MerPattern::get_suffix(std::string& out, int k) const {
    out = std::string(m_str, 0, static_cast<std::size_t>(k));
}

void Dna8MerPattern::get_kernel_substr(int pos, DnaSeqDegChar c, std::string& out, int k) const {
    int start = pos - k / 2;
    if (start + k >= length())
        start = length() - k - 1;
    if (start < 0)
        start = 0;
    out = std::string(m_str, static_cast<std::size_t>(start), static_cast<std::size_t>(k));
    if (pos - start < static_cast<int>(out.size()))
        out[static_cast<std::size_t>(pos - start)] = c.get_char_encoding();
}

void Dna8MerPattern::dbg_print(std::ostream& out) const {
    out << m_str << " from " << m_from_range << " to " << m_to_range << " mismatches " << m_mismatches
        << "\n";
    for (int p = 0; p < 8; ++p) {
        out << p << ":";
        for (const DnaDegChar8Mer& w : m_phase[p]) {
            out << " ";
            w.write(out);
        }
        out << "\n";
    }
}

std::ostream& operator<<(std::ostream& out, const Dna8MerPattern& pat) { return out << pat.get_str(); }
