// version(), sea_msg() and arg_version().
#include "version.h"

#include <cstring>
#include <iostream>

const char* version() { return "0.01"; }

const char* sea_msg() { return "this function should not be called"; }

bool arg_version(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "version") == 0) {
        std::cout << argv[0] << " " << version() << std::endl;
        return true;
    }
    return false;
}
