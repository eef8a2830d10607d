// Profile HMMs: the chain topology, parallel copies, and alignments read off Viterbi paths.
#include "ProfileHMM.h"

#include "HMMDecode.h"
#include "LogSpace.h"
#include "error.h"

#include <iostream>
#include <map>
#include <utility>

static constexpr char kSrc[] = "ProfileHMM";

const char* ProfileHMM::type_text(int type) {
    static const char* const kText[] = {"Start", "Fin  ", "M    ", "I    ", "D    "};
    return type >= 0 && type < 5 ? kText[type] : "Error";
}

ProfileHMM::ProfileHMM(int alphabet, int length) : HMM(alphabet), m_length(0) {
    m_state_type.push_back(Start);
    m_state_pos.push_back(0);
    if (length >= 1)
        update_length(length);
}

int ProfileHMM::add_typed_state(StateType type, int pos) {
    const int id = new_state(type == D || type == Fin);
    if (static_cast<int>(m_state_type.size()) <= id) {
        m_state_type.resize(id + 1, Start);
        m_state_pos.resize(id + 1, 0);
    }
    m_state_type[id] = type;
    m_state_pos[id] = pos;
    return id;
}

void ProfileHMM::update_length(int length) {
    std::cerr << "PrHMM: upd lengt " << length << "\n";
    HMM::reset();
    m_length = length;
    m_state_type.assign(1, Start);
    m_state_pos.assign(1, 0);
    m_pos_state.assign(length + 2, std::vector<int>(6, -1));
    m_pos_state[0][Start] = 0;
    m_pos_state[0][M] = 0;
    int pm = 0;
    int pi = add_typed_state(I, 0);
    int pd = -1;
    m_pos_state[0][I] = pi;
    for (int k = 0; k < length; ++k) {
        const int m = add_typed_state(M, k);
        const int i = add_typed_state(I, k + 1);
        const int d = add_typed_state(D, k);
        m_pos_state[k + 1][M] = m;
        m_pos_state[k + 1][I] = i;
        m_pos_state[k + 1][D] = d;
        add_transition(pm, m, 0.0f);
        add_transition(pm, d, 0.0f);
        add_transition(pm, pi, 0.0f);
        add_transition(pi, d, 0.0f);
        add_transition(pi, m, 0.0f);
        add_transition(pi, pi, 0.0f);
        if (pd >= 0) {
            add_transition(pd, d, 0.0f);
            add_transition(pd, m, 0.0f);
            add_transition(pd, pi, 0.0f);
        }
        pm = m;
        pi = i;
        pd = d;
    }
    add_finish_state();
    m_state_type.resize(m_finish_state + 1, Start);
    m_state_pos.resize(m_finish_state + 1, 0);
    m_state_type[m_finish_state] = Fin;
    m_state_pos[m_finish_state] = length + 1;
    m_pos_state[length + 1][M] = m_finish_state;
    m_pos_state[length + 1][Fin] = m_finish_state;
    add_transition(pm, m_finish_state, 0.0f);
    add_transition(pm, pi, 0.0f);
    add_transition(pi, m_finish_state, 0.0f);
    add_transition(pi, pi, 0.0f);
    if (pd >= 0) {
        add_transition(pd, m_finish_state, 0.0f);
        add_transition(pd, pi, 0.0f);
    }
}

int ProfileHMM::state_at(int pos, int type) const {
    if (pos < 0 || pos >= static_cast<int>(m_pos_state.size()) || type < 0 || type >= 6)
        return -1;
    return m_pos_state[pos][type];
}

// Sets the first record of `lst` whose other end is `id`; false if there is none.
static bool set_in_list(std::list<HMMAdjacency>& lst, int HMMAdjacency::*end, int id, float p) {
    for (HMMAdjacency& a : lst) {
        if (a.*end == id) {
            a.set_adj_prob(p);
            return true;
        }
    }
    return false;
}

bool ProfileHMM::set_edge_p(int from, int to, float p) {
    if (from < 0 || to < 0)
        return false;
    const bool fwd = set_in_list(m_adj[from], &HMMAdjacency::to, to, p);
    const bool back = set_in_list(m_back_adj[to], &HMMAdjacency::from, from, p);
    return fwd && back;
}

void ProfileHMM::set_transition_p(int from_pos, StateType from_type, int to_pos, StateType to_type, float p) {
    if (p > 1.0f)
        VESK_FATAL(kSrc, "Trying to set prob = " << p << " >1 at " << from_pos << " s " << from_type << " to "
                                                 << to_pos << " s " << to_type);
    if (!set_edge_p(state_at(from_pos, from_type), state_at(to_pos, to_type), p))
        VESK_FATAL(kSrc, "Try set profile HMM adj from pos " << from_pos << " type " << from_type
                                                             << " to pos " << to_pos << " type " << to_type);
}

void ProfileHMM::set_emission(int pos, StateType type, int symbol, float p) {
    if (p > 1.0f)
        VESK_FATAL(kSrc, "Tring to set emis with p " << p << " > 1");
    const int k = state_at(pos, type);
    if (k < 0 || symbol < 0 || symbol >= m_alphabet_size)
        VESK_FATAL(kSrc, "No emitting state at pos " << pos << " type " << type << " symbol " << symbol);
    set_state_emission(k, symbol, p);
}

// One state per line: id, type text, position (and copy), the edges, the emissions of an emitting state.
static void print_state(std::ostream& out, const HMM& h, int k, int type, int pos, int copy) {
    out << k << " " << ProfileHMM::type_text(type) << " pos " << pos;
    if (copy != -2)
        out << " copy " << copy;
    out << " :";
    for (const HMMAdjacency& a : h.m_adj[k])
        out << " , " << a.to << " p = " << a.p;
    if (!h.m_states[k].m_silent) {
        out << " (";
        for (float e : h.m_states[k].m_emit)
            out << " " << e;
        out << " )";
    }
    out << "\n";
}

void ProfileHMM::print(std::ostream& out) const {
    for (int k = 0; k < num_states(); ++k)
        if (m_states[k].m_active)
            print_state(out, *this, k, m_state_type[k], m_state_pos[k], -2);
}

KProfileHMM::KProfileHMM(int alphabet, int num_copies, int length) : HMM(alphabet), m_num_used(0) {
    update_copy_length(num_copies, length);
}

void KProfileHMM::set_state_info(int id, int type, int pos, int copy) {
    if (static_cast<int>(m_state_type.size()) <= id) {
        m_state_type.resize(id + 1, 0);
        m_state_pos.resize(id + 1, 0);
        m_state_copy.resize(id + 1, -1);
    }
    m_state_type[id] = type;
    m_state_pos[id] = pos;
    m_state_copy[id] = copy;
}

void KProfileHMM::reset() {
    HMM::reset();
    m_state_type.clear();
    m_state_pos.clear();
    m_state_copy.clear();
    m_fin_entries.clear();
    m_used_copies.clear();
    m_num_used = 0;
    add_finish_state();
    set_state_info(0, ProfileHMM::Start, 0, -1);
    set_state_info(m_finish_state, ProfileHMM::Fin, 0, -1);
}

void KProfileHMM::update_copy_length(int copies, int length) {
    reset();
    const ProfileHMM empty(m_alphabet_size, length);
    for (int c = 0; c < copies; ++c)
        add_prof_hmm(empty);
}

int KProfileHMM::add_prof_hmm(const ProfileHMM& src) {
    ++m_num_used;
    int copy = 0;
    while (copy < num_copy_ids() && m_used_copies[copy])
        ++copy;
    if (copy == num_copy_ids())
        m_used_copies.push_back(false);
    m_used_copies[copy] = true;
    std::cerr << "will add prof at copy id " << copy << "\n";

    m_fin_entries.assign(m_back_adj[m_finish_state].begin(), m_back_adj[m_finish_state].end());
    del_finish_state();
    // A reused id keeps its old flag and vectors, so both are set from src here.
    std::vector<int> map(src.num_states(), -1);
    map[0] = 0;
    for (int s = 1; s < src.num_states(); ++s) {
        if (s == src.m_finish_state || !src.m_states[s].m_active)
            continue;
        const int id = new_state(src.m_states[s].m_silent);
        m_states[id] = src.m_states[s];
        set_state_info(id, src.m_state_type[s], src.m_state_pos[s], copy);
        map[s] = id;
    }
    std::cerr << "KPHMM done adding states\n";
    // The decoders need the finish state at the highest id, so it takes a new id even when a shorter
    // copy left freed ids unused.
    std::priority_queue<int> spare;
    spare.swap(m_free_ids);
    add_finish_state();
    m_free_ids.swap(spare);
    m_states[m_finish_state] = HMMState(m_alphabet_size, true);
    set_state_info(m_finish_state, ProfileHMM::Fin, src.m_length + 1, -1);
    if (src.m_finish_state >= 0)
        map[src.m_finish_state] = m_finish_state;
    std::cerr << "KPHmm fin state = " << m_finish_state << "\n";
    std::cerr << "KPHMM will put back end topo\n";
    for (const HMMAdjacency& a : m_fin_entries)
        add_transition(a.from, m_finish_state, a.p);
    m_fin_entries.clear();

    std::cerr << "KPHMM start adding transitions\n";
    for (int s = 0; s < src.num_states(); ++s) {
        for (const HMMAdjacency& a : src.m_adj[s]) {
            std::cerr << "KPHmm will add " << a.p << " for " << map[s] << " seq " << copy << "\n";
            add_transition(map[s], map[a.to], a.p);
        }
    }

    const int k = m_num_used;
    float old_mass = 0.0f;
    for (const HMMAdjacency& a : m_adj[0])
        if (m_state_copy[a.to] != copy)
            old_mass += a.p;
    for (HMMAdjacency& a : m_adj[0]) {
        float p;
        if (m_state_copy[a.to] == copy)
            p = a.p / static_cast<float>(k);
        else
            p = old_mass > 0.0f ? static_cast<float>(k - 1) * a.p / (static_cast<float>(k) * old_mass) : a.p;
        a.set_adj_prob(p);
        for (HMMAdjacency& b : m_back_adj[a.to])
            if (b.from == 0)
                b.set_adj_prob(p);
    }
    return copy;
}

void KProfileHMM::del_prof_hmm(int copy) {
    --m_num_used;
    if (!copy_used(copy))
        VESK_FATAL(kSrc, "Try to del unsued copy " << copy << " from KPorfileHMM");
    for (int k = 0; k < num_states(); ++k)
        if (m_states[k].m_active && m_state_copy[k] == copy)
            del_state(k);
    m_used_copies[copy] = false;
}

void KProfileHMM::get_prof_hmm(int copy, ProfileHMM& out) {
    // The state of `out` for each (type, m_state_pos) pair.
    std::map<std::pair<int, int>, int> out_id;
    for (int s = 1; s < out.num_states(); ++s)
        if (s != out.m_finish_state)
            out_id[std::make_pair(static_cast<int>(out.m_state_type[s]), out.m_state_pos[s])] = s;
    std::vector<int> map(num_states(), -1);
    map[0] = 0;
    map[m_finish_state] = out.m_finish_state;
    for (int k = 1; k < num_states(); ++k) {
        if (!m_states[k].m_active || m_state_copy[k] != copy)
            continue;
        auto it = out_id.find(std::make_pair(m_state_type[k], m_state_pos[k]));
        if (it == out_id.end())
            VESK_FATAL(kSrc, "Copy " << copy << " state " << k << " has no place in a profile of length "
                                     << out.m_length);
        map[k] = it->second;
    }
    float share[5] = {0, 0, 0, 0, 0};
    float sum = 0.0f;
    for (const HMMAdjacency& a : m_adj[0]) {
        if (m_state_copy[a.to] == copy) {
            share[m_state_type[a.to]] += a.p;
            sum += a.p;
        }
    }
    std::cerr << "start scale = " << sum << "\n";
    for (const HMMAdjacency& a : m_adj[0]) {
        if (m_state_copy[a.to] != copy)
            continue;
        const int t = m_state_type[a.to];
        const float p = sum > 0.0f ? a.p / sum : 0.0f;
        std::cerr << "set start to type " << t << " to " << share[t] / sum << "\n";
        out.set_edge_p(0, map[a.to], p);
    }
    for (int k = 1; k < num_states(); ++k) {
        if (map[k] < 0 || k == m_finish_state)
            continue;
        for (const HMMAdjacency& a : m_adj[k])
            out.set_edge_p(map[k], map[a.to], a.p);
        out.m_states[map[k]].m_emit = m_states[k].m_emit;
        out.m_states[map[k]].m_log_emit = m_states[k].m_log_emit;
    }
    std::cerr << "out of here\n";
}

void KProfileHMM::print(std::ostream& out) const {
    for (int k = 0; k < num_states(); ++k)
        if (m_states[k].m_active)
            print_state(out, *this, k, m_state_type[k], m_state_pos[k], m_state_copy[k]);
}

void ProfileHMMMultiAlign::align(const SymbolSequenceSet& seqs, std::vector<bool>& use, SeqMultiAlign& msa) {
    std::cerr << "ProfileHMMMultiAl have " << seqs.size() << " sequences\n";
    const int L = m_prof.m_length;
    ViterbiDecode vit(m_prof);
    std::vector<int> ids;
    std::vector<HMMPath> paths;
    for (int i = 0; i < static_cast<int>(seqs.size()); ++i) {
        if (i >= static_cast<int>(use.size()) || !use[i])
            continue;
        std::cerr << "PHMMAlign viterb " << i << "\n";
        paths.emplace_back();
        vit.decode(seqs[i], paths.back());
        ids.push_back(i);
        std::cerr << "Done viterb " << i << "\n";
    }
    // Widest insert at each table position 0..L.
    std::vector<int> width(L + 1, 0);
    for (const HMMPath& path : paths) {
        std::vector<int> run(L + 1, 0);
        for (int s : path)
            if (m_prof.m_state_type[s] == ProfileHMM::I)
                ++run[m_prof.m_state_pos[s]];
        for (int p = 0; p <= L; ++p)
            width[p] = std::max(width[p], run[p]);
    }
    // First column of the insert block of position p; the match column of position p+1 follows it.
    std::vector<int> ins_col(L + 1, 0);
    int cols = 0;
    for (int p = 0; p <= L; ++p) {
        ins_col[p] = cols;
        cols += width[p] + (p < L ? 1 : 0);
    }
    msa.reset_align(cols, static_cast<int>(paths.size()));
    for (std::size_t r = 0; r < paths.size(); ++r) {
        msa.set_seq_id(static_cast<int>(r), ids[r]);
        std::vector<int> used(L + 1, 0);
        int residue = 0;
        for (int s : paths[r]) {
            std::cerr << "will set state " << s << " pos " << m_prof.m_state_pos[s] << "\n";
            const int type = m_prof.m_state_type[s];
            const int p = m_prof.m_state_pos[s];
            if (type == ProfileHMM::M)
                msa.set_seq_pos(static_cast<int>(r), ins_col[p] + width[p], residue++);
            else if (type == ProfileHMM::I)
                msa.set_seq_pos(static_cast<int>(r), ins_col[p] + used[p]++, residue++);
        }
        std::cerr << "done update path\n";
    }
}
