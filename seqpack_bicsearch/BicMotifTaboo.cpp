// BicMotifTaboo: hill climbing over pattern neighbourhoods with a ring of tabu features.
#include "BicMotifTaboo.h"

#include "options.h"

#include <fstream>
#include <iostream>

namespace {
const float kWorst = -3.4028234663852886e+38f;

std::string scoped(options& opts, const std::string& scope, const char* key) {
    return opts.get_str(scope, key, true);
}
} // namespace

BicMotifTaboo::BicMotifTaboo(const ExpVarGraphBase& graph, WgtSchemeBase& wgt, AssocPatternHashDense& assoc,
                             options& opts, const std::string& scope)
    : m_assoc(assoc), m_iter(opts.get_int(scoped(opts, scope, "PatIterScope"), "MaxGap", true),
                             opts.get_int(scoped(opts, scope, "PatIterScope"), "RangeStep", true),
                             opts.get_int(scoped(opts, scope, "PatIterScope"), "MaxRange", true)),
      m_score(graph, wgt, assoc, opts, scoped(opts, scope, "ScoreScope")), m_best_score(kWorst),
      m_cur_score(kWorst), m_neig_score(kWorst), m_clock(0), m_neighbours(0) {
    m_min_genes = opts.get_int(scope, "MinNumberOfGenes", true);
    m_max_time = opts.get_int(scope, "TabooMaxTime", true);
    m_period = opts.get_int(scope, "TabooPeriod", true);
    if (m_period < 1)
        m_period = 1;
    m_verify_score = opts.get_int(scope, "VerifyScore", true) != 0;
    m_verify_assoc = opts.get_int(scope, "VerifyAssoc", true) != 0;
    m_debug = opts.get_int(scope, "Logit", true) != 0;
    m_epsilon = opts.get_float(scope, "Epsilon", true);
    m_iter.set_masks(&m_avoid, &m_force);
    const std::string stat = opts.get_str("Tables", "score_tab", false);
    const std::string glob = opts.get_str("Tables", "glob_score_tab", false);
    std::ifstream s(stat), g(glob);
    m_score.read_score_stat(s, g);
}

bool BicMotifTaboo::better(float a, float b) const {
    return a + m_epsilon < b || (b < 0.0f && a < 0.0f && b / a < 0.9f);
}

void BicMotifTaboo::init() {
    m_clock = 0;
    m_ring.assign(static_cast<std::size_t>(m_period), TabooFeature());
    m_move = PatternModification<Dna8MerPattern>();
    m_iter.m_range_iter_flag = true;
    for (Dna8MerPattern* mask : {&m_avoid, &m_force}) {
        mask->init_str("");
        mask->m_to_range = -1;
        mask->m_from_range = 0;
        for (int i = 0; i < m_assoc.get_pattern().length(); ++i)
            mask->push_back(DnaSeqDegChar(0));
    }
    m_best_score = m_score.score();
    m_best_pattern = m_assoc.get_pattern();
    m_score.get_conds(m_best_conds, m_best_groups);
    m_best_genes = m_assoc.get_genes();
}

void BicMotifTaboo::optimize() {
    init();
    while (m_clock < m_max_time) {
        hill_climb();
        update_glob_best();
        update_taboo();
        ++m_clock;
    }
}

void BicMotifTaboo::hill_climb() {
    m_cur_score = kWorst;
    while (true) {
        local_search();
        if (!better(m_cur_score, m_neig_score))
            break;
        m_cur_score = m_neig_score;
        apply_step();
        if (m_debug)
            std::cerr << "BMTaboo imp step -> " << m_assoc.get_pattern() << std::endl;
    }
}

void BicMotifTaboo::local_search() {
    m_neig_score = kWorst;
    m_neighbours = 0;
    for (m_iter.restart(m_assoc); m_iter.is_valid(); ++m_iter) {
        ++m_neighbours;
        if (m_verify_assoc)
            m_assoc.verify();
        if (m_verify_score)
            m_score.verify();
        if (m_assoc.get_genes().on_bits() < m_min_genes)
            continue;
        const float s = m_score.score();
        if (better(m_neig_score, s)) {
            m_neig_score = s;
            m_iter.get_cur_modification(m_move);
        }
    }
}

void BicMotifTaboo::apply_step() { m_move.apply_mask(m_assoc, m_avoid, m_force); }

void BicMotifTaboo::update_taboo() {
    TabooFeature& slot = m_ring[static_cast<std::size_t>(m_clock % m_period)];
    if (slot.m_type == 1) {
        Dna8MerPattern& mask = slot.m_is_force ? m_force : m_avoid;
        if (slot.m_pos < mask.length())
            mask.set_deg_char(slot.m_pos, DnaSeqDegChar(static_cast<unsigned char>(
                                              mask.get_deg_char(slot.m_pos).m_val & ~slot.m_chars.m_val)));
    } else if (slot.m_type != 0) {
        m_iter.m_range_iter_flag = true;
    }
    std::cerr << "BMTaboo least bad modif type " << m_move.get_type() << std::endl;
    TabooFeature made;
    made.m_type = m_move.get_type();
    if (m_move.get_type() == 1) {
        const int pos = m_move.get_pos();
        const int old_set = m_assoc.get_pattern().get_deg_char(pos).m_val & 15;
        const int c = m_move.get_new_char().m_val & 15;
        made.m_pos = pos;
        if ((c & old_set) == old_set) {
            made.m_chars = DnaSeqDegChar(static_cast<unsigned char>(c & ~old_set));
            made.m_is_force = true;
        } else {
            made.m_chars = DnaSeqDegChar(static_cast<unsigned char>(old_set & ~c));
            made.m_is_force = false;
        }
        Dna8MerPattern& mask = made.m_is_force ? m_force : m_avoid;
        if (pos < mask.length())
            mask.set_deg_char(pos, DnaSeqDegChar(static_cast<unsigned char>(mask.get_deg_char(pos).m_val |
                                                                            made.m_chars.m_val)));
    } else if (m_move.get_type() == 4) {
        m_iter.m_range_iter_flag = false;
    }
    slot = made;
    m_move.apply_mask(m_assoc, m_avoid, m_force);
}

void BicMotifTaboo::update_glob_best() {
    if (!better(m_best_score, m_cur_score))
        return;
    m_best_score = m_cur_score;
    m_best_pattern = m_assoc.get_pattern();
    m_score.get_conds(m_best_conds, m_best_groups);
    m_best_genes = m_assoc.get_genes();
    std::cerr << "BMTaboo New Glob Best " << m_best_pattern << std::endl;
}
