// Version string and the "version" argument convention of programs built on the libraries.
#ifndef VESK_BASE_VERSION_H
#define VESK_BASE_VERSION_H

const char* version();
const char* sea_msg();

// With exactly one argument "version": print the program path, a blank and version(), return true.
bool arg_version(int argc, char** argv);

#endif
