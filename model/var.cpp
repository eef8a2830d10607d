// bpm_basevar: the default attribute handler of pathway variables.
#include "var.h"

#include <iostream>

void bpm_basevar::set_attr(const std::string&, const std::string&, const std::string&, const std::string&) {
    std::cerr << "no recognized attributes for this variable\n";
}
