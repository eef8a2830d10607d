// Uses the installed headers and libraries: a class table read from text, a bit vector, an option.
#include "VarClasses.h"
#include "ds/BitVec.h"
#include "options.h"

#include <iostream>
#include <sstream>

int main() {
    options opts;
    std::istringstream opt_text("[Demo]\nWidth = 40\n");
    opts.read(opt_text, false);
    const int n = opts.get_int("Demo", "Width", true);
    ds_bitvec mask(n);
    for (int i = 0; i < n; i += 2)
        mask.set_ind(i);
    std::istringstream keys("0\tGO:1\tfirst\t0\n1\tGO:2\tsecond\t0\n");
    std::istringstream assoc("0 2\n0 3\n0 4\n1 4\n");
    VarClasses classes;
    classes.read(keys, assoc, n, &mask);
    // Only even variables pass the mask: class 0 holds 2 and 4, class 1 holds 4.
    const bool ok = classes.class_count() == 2 && classes.m_class_bits[0].on_bits() == 2 &&
                    classes.m_class_bits[1].on_bits() == 1 && mask.on_bits() == 20;
    std::cout << (ok ? "consumer ok" : "consumer wrong") << std::endl;
    return ok ? 0 : 1;
}
