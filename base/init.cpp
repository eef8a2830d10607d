// Exit hooks (base_actions) and base_crash.
#include "init.h"

#include "modes.h"

#include <cstdlib>
#include <iostream>

namespace {

// 64 slots and a count; the count is not tested against the slots, as callers are few.
struct ActionTable {
    base_action actions[64];
    int count;
};

ActionTable& base_actions() {
    static ActionTable table{{}, 0};
    return table;
}

void run_exit_hooks() {
    ActionTable& t = base_actions();
    for (int i = 0; i < t.count; ++i)
        t.actions[i]();
}

// Touches the channels at start-up so that they exist (and are destroyed) before the
// hook runner runs at process end, in the order: runner, error channel, trace channel.
struct StartUp {
    StartUp() {
        static std::ios_base::Init stream_init;
        base_register_exit_runner();
        get_error_mode();
        get_trace_mode();
    }
};
StartUp start_up;

} // namespace

bool base_register_exit_runner() {
    static const bool registered = (std::atexit(run_exit_hooks) == 0);
    return registered;
}

void at_finish(base_action func) {
    base_register_exit_runner();
    ActionTable& t = base_actions();
    t.actions[t.count++] = func;
}

void base_crash() { std::abort(); }
