// Process start-up and end: exit hooks and the crash routine.
#ifndef VESK_BASE_INIT_H
#define VESK_BASE_INIT_H

typedef void (*base_action)();

// Registers a function to run at normal process end, in registration order.
void at_finish(base_action func);

// Registers the exit hook runner with the C runtime once; returns true.
bool base_register_exit_runner();

// Ends the process at once: no destructors, no exit hooks.
[[noreturn]] void base_crash();

#endif
