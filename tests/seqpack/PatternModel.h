// A plain model of degenerate patterns and of the incremental gene-set rules, for the pattern tests:
// one accepted set a position, the A refused behind a dense pattern's end as a set of positions, and
// per gene the list of match starts changed by the documented rules.
#ifndef VESK_TEST_PATTERNMODEL_H
#define VESK_TEST_PATTERNMODEL_H

#include "DnaSeqChar.h"
#include "DnaSeqGenomePromoters.h"
#include "KMerAggragator.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

struct PatModel {
    bool dense = true;
    std::vector<int> acc; // accepted bases (and gap bit in the letter form)
    std::string text;     // lookup letters: A C G T where the text holds them, else '*'
    // dense: positions where an A is refused (a five-bit complement spilled), with the mask of the
    // phase versions that hold the bit (lost at the top nibble of a word, or with a dropped word)
    std::map<int, int> leaks;
    int to = -1, from = 0, mm = 0;

    int len() const { return static_cast<int>(acc.size()); }
    static char letter(int v) { return DnaSeqDegChar(static_cast<unsigned char>(v)).get_char_encoding(); }
    static char lookup_letter(char c) { return c == 'A' || c == 'C' || c == 'G' || c == 'T' ? c : '*'; }

    void push_back(int c) {
        const int n = len();
        leaks.erase(n);
        if (dense && c < 16)
            for (int p = 0; p < 8; ++p)
                if ((n + p) % 8 != 7)
                    leaks[n + 1] |= 1 << p;
        acc.push_back(dense ? c & 15 : c);
        text.push_back(lookup_letter(letter(c)));
    }
    // Version p takes the old version p + 1 (version 7 the old 0): masks turn by one phase.
    void push_front(int c) {
        std::map<int, int> moved;
        for (const auto& l : leaks)
            moved[l.first + 1] = ((l.second >> 1) | (l.second << 7)) & 255;
        leaks.swap(moved);
        acc.insert(acc.begin(), dense ? 15 : c);
        text.insert(text.begin(), dense ? '*' : lookup_letter(letter(c)));
    }
    // A version whose old last position opened a word drops that word with its spilled bits.
    int pop_back() {
        const int v = acc.back();
        acc.pop_back();
        text.pop_back();
        const int n = len();
        for (auto& l : leaks)
            for (int p = 0; p < 8; ++p)
                if ((n + p) % 8 == 0 && (l.first + p) / 8 == (n + p) / 8)
                    l.second &= ~(1 << p);
        return v;
    }
    int pop_front() {
        const int v = acc.front();
        acc.erase(acc.begin());
        text.erase(text.begin());
        std::map<int, int> moved;
        for (const auto& l : leaks)
            moved[l.first - 1] = ((l.second << 1) | (l.second >> 7)) & 255;
        leaks.swap(moved);
        return v;
    }
    void set_acc(int pos, int v) {
        acc[pos] = v;
        text[pos] = dense ? '*' : lookup_letter(letter(v));
    }
    std::string first(int k) const { return text.substr(0, static_cast<std::size_t>(k)); }
    // The dense pattern looks up its first k letters at the back too; the letter one its last k.
    std::string back(int k) const {
        return dense ? first(k) : text.substr(static_cast<std::size_t>(std::max(0, len() - k)));
    }
    std::string kernel(int pos, int c, int k) const {
        int start = pos - k / 2;
        if (start + k >= len())
            start = len() - k - 1;
        start = std::max(start, 0);
        std::string s = text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(k));
        if (pos - start < static_cast<int>(s.size()))
            s[static_cast<std::size_t>(pos - start)] = lookup_letter(letter(c));
        return s;
    }
};

// One gene's sequence as set bits a position: dense nibble values, or letter bits (A 1 G 2 C 4 T 8).
struct SeqModel {
    std::vector<int> vals;
    int length = 0; // the scan's end
    bool dense = true;
    int at(int p) const { return p >= 0 && p < static_cast<int>(vals.size()) ? vals[p] : 0; }

    // Starts of a fresh match: the dense window ends before length - L - 1 (or at to - L + 1 when the
    // sequence holds to + L), the letter window at length - L (or to - L) inclusive.
    std::vector<int> starts(const PatModel& m) const {
        const int L = m.len();
        int end;
        if (dense) {
            end = length - L - 1;
            if (m.to != -1 && length >= m.to + L)
                end = m.to - L + 1;
        } else {
            end = (static_cast<unsigned>(length) < static_cast<unsigned>(m.to) ? length - L : m.to - L) + 1;
        }
        std::vector<int> out;
        for (int s = std::max(m.from, 0); s < end; ++s) {
            int bad = 0;
            for (int i = 0; i < L; ++i) {
                const int v = at(s + i);
                if (dense)
                    bad += __builtin_popcount(v & ~m.acc[i] & 15);
                else
                    bad += (v & m.acc[i]) == 0;
            }
            if (dense)
                for (const auto& l : m.leaks)
                    if ((l.second >> (s % 8) & 1) && (s + l.first) / 8 == (s + L - 1) / 8)
                        bad += at(s + l.first) & 1;
            if (bad <= m.mm)
                out.push_back(s);
        }
        return out;
    }
};

// The gene set of a pattern under the incremental rules, with candidates from the real k-mer index.
struct HashModel {
    struct Gene {
        bool have = false;
        std::set<int> starts;
    };
    PatModel pat;
    std::vector<SeqModel> seqs;
    std::vector<Gene> genes;
    std::set<int> in;
    std::vector<bool> allowed;
    KMerAggragator<DnaSequence>* index = nullptr;
    int k = 6;

    std::vector<bool> cand(const std::string& t) {
        if (static_cast<int>(t.size()) < k)
            return allowed;
        const ds_bitvec& b = index->get_deg_pattern_sup_fp(t);
        std::vector<bool> out(allowed.size());
        for (std::size_t g = 0; g < out.size(); ++g)
            out[g] = static_cast<int>(g) < b.size() && b.get_ind(static_cast<int>(g));
        return out;
    }
    bool full(int g) {
        Gene& s = genes[g];
        s.starts.clear();
        const std::vector<int> st = seqs[g].starts(pat);
        if (pat.len() < 4) {
            s.have = false;
            return !st.empty();
        }
        s.have = true;
        s.starts.insert(st.begin(), st.end());
        return !s.starts.empty();
    }
    template <class Keep> bool filter(int g, Keep keep) {
        if (pat.len() <= 4)
            return full(g);
        std::set<int> next;
        for (int s : genes[g].starts) {
            int moved = s;
            if (keep(s, moved))
                next.insert(moved);
        }
        genes[g].starts.swap(next);
        return !genes[g].starts.empty();
    }
    void add_candidates(const std::vector<bool>& c) {
        for (std::size_t g = 0; g < c.size(); ++g)
            if (c[g] && allowed[g] && !in.count(static_cast<int>(g)) && full(static_cast<int>(g)))
                in.insert(static_cast<int>(g));
    }
    void match(const PatModel& p) {
        pat = p;
        in.clear();
        const std::vector<bool> c = pat.len() >= k ? cand(pat.back(k)) : allowed;
        for (std::size_t g = 0; g < c.size(); ++g)
            if (allowed[g] && c[g] && full(static_cast<int>(g)))
                in.insert(static_cast<int>(g));
    }
    bool fits(int g, int p, int c) const { return (seqs[g].at(p) & c) != 0; }
    void push_back(int c) {
        pat.push_back(c);
        if (c == 15)
            return;
        const std::vector<bool> cd = cand(pat.back(k));
        const int last = pat.len() - 1;
        for (int g : std::set<int>(in)) {
            const bool stays = cd[g] && filter(g, [&](int s, int&) {
                                   return static_cast<unsigned>(s + last) < static_cast<unsigned>(pat.to) &&
                                          fits(g, s + last, c);
                               });
            if (!stays)
                in.erase(g);
        }
    }
    void push_front(int c) {
        pat.push_front(c);
        if (c == 15)
            return;
        const std::vector<bool> cd = cand(pat.back(k));
        for (int g : std::set<int>(in)) {
            const bool stays = cd[g] && filter(g, [&](int s, int& moved) {
                                   moved = s - 1;
                                   return s > pat.from && fits(g, s - 1, c);
                               });
            if (!stays)
                in.erase(g);
        }
    }
    void change_char(int pos, int c) {
        const int add = c & ~pat.acc[pos] & 15;
        if (add) {
            const std::vector<bool> cd = cand(pat.kernel(pos, add, k));
            pat.set_acc(pos, pat.acc[pos] | add);
            for (std::size_t g = 0; g < cd.size(); ++g)
                if (cd[g] && allowed[g] && full(static_cast<int>(g)))
                    in.insert(static_cast<int>(g));
        }
        const int del = pat.acc[pos] & ~c & 15;
        if (del) {
            const std::vector<bool> cd = cand(pat.kernel(pos, del, k));
            pat.set_acc(pos, pat.acc[pos] & ~del);
            for (int g : std::set<int>(in)) {
                if (!cd[g])
                    continue;
                for (int base : {1, 2, 4, 8})
                    if ((del & base) && !filter(g, [&](int s, int&) { return !fits(g, s + pos, base); })) {
                        in.erase(g);
                        break;
                    }
            }
        }
    }
    void del_back() {
        if ((pat.pop_back() & 15) == 15)
            return;
        for (int g : std::set<int>(in))
            if (!full(g))
                in.erase(g);
        add_candidates(cand(pat.back(k)));
    }
    void del_front() {
        const int removed = pat.pop_front();
        if ((removed & 15) == 15)
            return;
        for (int g : std::set<int>(in))
            if (!full(g))
                in.erase(g);
        std::string t = pat.first(k);
        if (!t.empty())
            t[0] = PatModel::lookup_letter(PatModel::letter(removed & 15));
        add_candidates(cand(t));
    }
    void change_to(int to) {
        const int old = pat.to;
        pat.to = to;
        const bool grew = static_cast<unsigned>(to) > static_cast<unsigned>(old);
        for (int g : std::set<int>(in)) {
            bool stays;
            if (pat.len() <= 4)
                stays = full(g);
            else if (grew) {
                for (int s : seqs[g].starts(pat))
                    if (s >= old)
                        genes[g].starts.insert(s);
                stays = !genes[g].starts.empty();
            } else
                stays = filter(g, [&](int s, int&) { return s < to - pat.len() + 1 || to == old; });
            if (!stays)
                in.erase(g);
        }
        if (grew)
            add_candidates(cand(pat.first(k)));
    }
    void change_from(int from) {
        const int old = pat.from;
        pat.from = from;
        for (int g : std::set<int>(in)) {
            bool stays;
            if (pat.len() <= 4)
                stays = full(g);
            else if (from < old) {
                for (int s : seqs[g].starts(pat))
                    if (s < old)
                        genes[g].starts.insert(s);
                stays = !genes[g].starts.empty();
            } else
                stays = filter(g, [&](int s, int&) { return s >= from; });
            if (!stays)
                in.erase(g);
        }
        if (from < old)
            add_candidates(cand(pat.first(k)));
    }
};

#endif
