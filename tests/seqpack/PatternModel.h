// A plain model of degenerate patterns and of the incremental gene-set rules, for the pattern tests:
// one accepted set a position, the A refused behind a dense pattern's end as a set of positions, and
// per gene the list of match starts changed by the documented rules.
#ifndef VESK_TESTS_SEQPACK_PATTERNMODEL_H
#define VESK_TESTS_SEQPACK_PATTERNMODEL_H

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
    // Positions move by d; version p takes the old version p + d (mod 8), so the phase masks turn.
    void shift(int d) {
        std::map<int, int> moved;
        for (const auto& l : leaks)
            moved[l.first + d] =
                (d > 0 ? (l.second >> 1) | (l.second << 7) : (l.second << 1) | (l.second >> 7)) & 255;
        leaks.swap(moved);
    }
    void push_front(int c) {
        shift(1);
        acc.insert(acc.begin(), dense ? 15 : c);
        text.insert(text.begin(), dense ? '*' : lookup_letter(letter(c)));
    }
    // A version whose old last position opened a word drops that word with its spilled bits.
    int pop_back() {
        const int v = acc.back(), n = len() - 1;
        acc.pop_back();
        text.pop_back();
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
        shift(-1);
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
    PatModel pat;
    std::vector<SeqModel> seqs;
    std::vector<std::set<int>> starts; // per gene; empty when no positions are kept
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
    // A fresh match: positions kept from length 4 on.
    bool full(int g) {
        const std::vector<int> st = seqs[g].starts(pat);
        starts[g].clear();
        if (pat.len() >= 4)
            starts[g].insert(st.begin(), st.end());
        return !st.empty();
    }
    // An incremental step: `step` keeps (and may move) a start; at most 4 positions, a fresh match.
    template <class Step> bool filter(int g, Step step) {
        if (pat.len() <= 4)
            return full(g);
        std::set<int> next;
        for (int s : starts[g])
            if (step(s))
                next.insert(s);
        starts[g].swap(next);
        return !starts[g].empty();
    }
    template <class Stays> void keep_if(Stays stays) {
        for (int g : std::set<int>(in))
            if (!stays(g))
                in.erase(g);
    }
    void add_candidates(const std::vector<bool>& c) {
        for (std::size_t g = 0; g < c.size(); ++g)
            if (c[g] && allowed[g] && (in.count(static_cast<int>(g)) || full(static_cast<int>(g))))
                in.insert(static_cast<int>(g));
    }
    void match(const PatModel& p) {
        pat = p;
        in.clear();
        add_candidates(pat.len() >= k ? cand(pat.back(k)) : allowed);
    }
    bool fits(int g, int p, int c) const { return (seqs[g].at(p) & c) != 0; }
    void push(bool back, int c) {
        back ? pat.push_back(c) : pat.push_front(c);
        if (c == 15)
            return;
        const std::vector<bool> cd = cand(pat.back(k));
        const int last = pat.len() - 1;
        keep_if([&](int g) {
            return cd[g] && filter(g, [&](int& s) {
                       if (back)
                           return static_cast<unsigned>(s + last) < static_cast<unsigned>(pat.to) &&
                                  fits(g, s + last, c);
                       return s-- > pat.from && fits(g, s, c);
                   });
        });
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
            keep_if([&](int g) {
                for (int base : {1, 2, 4, 8})
                    if (cd[g] && (del & base) && !filter(g, [&](int& s) { return !fits(g, s + pos, base); }))
                        return false;
                return true;
            });
        }
    }
    void del(bool back) {
        const int removed = back ? pat.pop_back() : pat.pop_front();
        if ((removed & 15) == 15)
            return;
        keep_if([&](int g) { return full(g); });
        std::string t = back ? pat.back(k) : pat.first(k);
        if (!back && !t.empty())
            t[0] = PatModel::lookup_letter(PatModel::letter(removed & 15));
        add_candidates(cand(t));
    }
    // A window end (to_side) or start moved: a shrink drops starts, a growth adds fresh ones beyond
    // the old edge.
    void window(bool to_side, int v) {
        int& edge = to_side ? pat.to : pat.from;
        const int old = edge;
        edge = v;
        const bool grew = to_side ? static_cast<unsigned>(v) > static_cast<unsigned>(old) : v < old;
        const bool shrank = to_side ? static_cast<unsigned>(v) < static_cast<unsigned>(old) : v > old;
        keep_if([&](int g) {
            if (pat.len() <= 4)
                return full(g);
            if (grew)
                for (int s : seqs[g].starts(pat))
                    if (to_side ? s >= old : s < old)
                        starts[g].insert(s);
            if (shrank)
                return filter(g, [&](int& s) { return to_side ? s < v - pat.len() + 1 : s >= v; });
            return !starts[g].empty();
        });
        if (grew)
            add_candidates(cand(pat.first(k)));
    }
};

#endif
