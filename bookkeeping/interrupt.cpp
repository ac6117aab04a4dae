#include "bookkeeping/interrupt.h"

#include <csignal>

#include "bills/task_error.h"

namespace vantlo {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void note_interrupt(int) { interrupted = 1; }

}  // namespace

void ask_before_interrupting() {
    struct sigaction action {};
    action.sa_handler = note_interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);  // no output is cut short
    for (const int signal : {SIGINT, SIGTERM}) sigaction(signal, &action, nullptr);
}

bool is_interrupted() { return interrupted != 0; }

void stop_if_interrupted() {
    if (is_interrupted()) throw TaskError(Reason::interrupted, "interrupted");
}

}  // namespace vantlo
