// vesk_main: the whole run of the vesk enrichment tool, from option files to the report.
#ifndef VESK_VESKRUN_H
#define VESK_VESKRUN_H

int vesk_main(int argc, char** argv);

#endif
