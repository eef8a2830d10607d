// vesk: enrichment of gene sets in annotation classes, corrected by a randomisation bootstrap.
#include "VeskRun.h"

int main(int argc, char** argv) { return vesk_main(argc, argv); }
