// What every example program does first: read its one option file, and open its tables with a message.
#ifndef VESK_EXAMPLES_EXAMPLEIO_H
#define VESK_EXAMPLES_EXAMPLEIO_H

#include "options.h"

#include <fstream>
#include <iostream>
#include <string>

// Opens `name` for reading; says so on the error stream when it can't.
inline bool open_in(std::ifstream& in, const std::string& name) {
    in.open(name);
    if (!in)
        std::cerr << "Cannot open " << name << std::endl;
    return static_cast<bool>(in);
}

// Reads the option file that is the program's only argument into `opts`. Returns 0 when read, else the
// exit code: 2 for a wrong command line (with the usage line), 1 for a file that can't be opened.
inline int read_option_file(int argc, char** argv, const char* program, options& opts) {
    if (argc != 2) {
        std::cerr << "usage: " << program << " <option file>" << std::endl;
        return 2;
    }
    std::ifstream in;
    if (!open_in(in, argv[1]))
        return 1;
    opts.read(in, false);
    return 0;
}

#endif
