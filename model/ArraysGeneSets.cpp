// ArraysGeneSets: the array tables.
#include "ArraysGeneSets.h"

#include "VarUniverse.h"
#include "error.h"
#include "idbound.h"

#include <iostream>
#include <limits>

static constexpr char kSrc[] = "ArraysGeneSets";

int ArraysGeneSets::add_array() {
    m_array_vars.emplace_back(m_universe.size());
    return size() - 1;
}

bool ArraysGeneSets::measures(int a, int v) const {
    if (a < 0 || a >= size() || v < 0 || v >= m_array_vars[a].size())
        return false;
    return (m_array_vars[a].word(v / 32) >> (v & 31)) & 1u;
}

void ArraysGeneSets::read(std::istream& arrk, std::istream& arrd) {
    std::cerr << "will read array set" << std::endl;
    int a, v;
    std::string name;
    while (arrk >> a >> name) {
        arrk.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        // Each array type holds a bit vector over the universe.
        if (!input_id_ok(a, input_id_limit(m_universe.size() / 32 + 1)))
            VESK_FATAL(kSrc, "Bad array num " << a);
        while (a >= size())
            add_array();
    }
    while (arrd >> a >> v) {
        if (a < 0 || a >= size())
            VESK_FATAL(kSrc, "Bad array num " << a);
        if (v < 0 || v >= m_array_vars[a].size())
            VESK_FATAL(kSrc, "Bad var num " << v);
        m_array_vars[a].set_ind(v);
    }
    std::cerr << "done read array set" << std::endl;
}
