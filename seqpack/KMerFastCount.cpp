// KMerFastCount: rolling two-bit codes over runs of A, C, G, T.
#include "KMerFastCount.h"

#include <algorithm>

namespace {
// Two-bit code of a letter, -1 for any other letter.
struct CodeTable {
    signed char code[256];
    CodeTable() {
        std::fill(code, code + 256, static_cast<signed char>(-1));
        code[static_cast<unsigned char>('A')] = 0;
        code[static_cast<unsigned char>('C')] = 1;
        code[static_cast<unsigned char>('G')] = 2;
        code[static_cast<unsigned char>('T')] = 3;
    }
};
const CodeTable& code_table() {
    static const CodeTable t;
    return t;
}
} // namespace

void KMerFastCount::count(const DnaSeqGenomePromoters<DnaSequence>& genome, const ds_bitvec& genes, int k,
                          int from, int to) {
    m_k = k;
    const std::size_t size = std::size_t(1) << (2 * k);
    m_count.assign(size, 0);
    m_genes.assign(size, 0);
    m_stamp.assign(size, -1);
    m_other.clear();
    const std::uint32_t mask = static_cast<std::uint32_t>(size - 1);
    const signed char* table = code_table().code;
    const int n = std::min(genome.id_space_size(), genes.size());
    std::string text;
    for (int gene = 0; gene < n; ++gene) {
        if (!genes.get_ind(gene))
            continue;
        const DnaSeqPromoter<DnaSequence>& seq = genome.get_promoter(gene);
        if (seq.is_empty())
            continue;
        const int limit = seq.get_length() - k;
        int first = from, last = limit;
        if (to == -1)
            first = 0;
        else
            last = std::min(to - k, limit);
        first = std::max(first, 0);
        if (last < first)
            continue;
        const char* s = seq.data();
        std::uint32_t code = 0;
        int bad = first - 1; // the last position holding another letter
        for (int i = first; i < last + k; ++i) {
            const int c = table[static_cast<unsigned char>(s[i])];
            if (c < 0)
                bad = i;
            else
                code = ((code << 2) | static_cast<std::uint32_t>(c)) & mask;
            const int start = i - k + 1;
            if (start < first)
                continue;
            if (bad >= start) {
                text.assign(s + start, static_cast<std::size_t>(k));
                Other& o = m_other[text];
                ++o.count;
                if (o.stamp != gene) {
                    o.stamp = gene;
                    ++o.genes;
                }
            } else {
                ++m_count[code];
                if (m_stamp[code] != gene) {
                    m_stamp[code] = gene;
                    ++m_genes[code];
                }
            }
        }
    }
}

void KMerFastCount::decode(std::uint32_t code, std::string& text) const {
    static const char kLetter[] = "ACGT";
    text.resize(static_cast<std::size_t>(m_k));
    for (int i = m_k - 1; i >= 0; --i) {
        text[static_cast<std::size_t>(i)] = kLetter[code & 3];
        code >>= 2;
    }
}

bool KMerFastCount::encode(const std::string& text, std::uint32_t& code) const {
    if (static_cast<int>(text.size()) != m_k)
        return false;
    code = 0;
    for (char l : text) {
        const int c = code_table().code[static_cast<unsigned char>(l)];
        if (c < 0)
            return false;
        code = (code << 2) | static_cast<std::uint32_t>(c);
    }
    return true;
}

std::uint64_t KMerFastCount::get_count(const std::string& text) const {
    std::uint32_t code;
    if (encode(text, code))
        return m_count[code];
    std::map<std::string, Other>::const_iterator it = m_other.find(text);
    return it == m_other.end() ? 0 : it->second.count;
}

int KMerFastCount::get_genes(const std::string& text) const {
    std::uint32_t code;
    if (encode(text, code))
        return static_cast<int>(m_genes[code]);
    std::map<std::string, Other>::const_iterator it = m_other.find(text);
    return it == m_other.end() ? 0 : it->second.genes;
}
