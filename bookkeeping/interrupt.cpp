#include "bookkeeping/interrupt.h"

#include <pthread.h>
#include <semaphore.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "ado/native/adapters.h"
#include "bills/task_error.h"

namespace vantlo {

namespace {

volatile std::sig_atomic_t interrupted = 0;
sem_t interruption;

extern "C" void note_interrupt(int) {
    interrupted = 1;
    sem_post(&interruption);
}

/// Waits for an interruption, then cancels what runs on servers: more than once, since a statement may be just about to
/// begin. After a moment nothing but the rest of the program's work is left.
void cancel_when_interrupted() {
    constexpr int times = 8;
    constexpr std::chrono::milliseconds pause(100);
    while (sem_wait(&interruption) != 0) {
    }
    for (int time = 0; time < times; ++time, std::this_thread::sleep_for(pause)) cancel_odbc_statements();
}

/// Starts a thread to which no signal is delivered.
void start_without_signals(void (*work)()) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread(work).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

void ask_before_interrupting() {
    sem_init(&interruption, 0, 0);
    start_without_signals(cancel_when_interrupted);
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
