#include "system/console.h"
#include "system/posix_temporary_names.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

namespace quillmere {

namespace {

std::atomic<bool> interruptRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may use lock-free atomics only");

constexpr unsigned grace = 1;  // seconds

/// As the signal would end it by itself, but leaves no temporary file.
void EndAtOnce(int signal) {
    posix::RemoveTemporaryFiles();
    ::signal(signal, SIG_DFL);
    sigset_t itself;
    sigemptyset(&itself);
    sigaddset(&itself, signal);
    pthread_sigmask(SIG_UNBLOCK, &itself, nullptr);
    raise(signal);
    _exit(128 + signal);  // no signal of its own ends the first process of a container
}

/// The first signal only asks the program to end; the next one, of whatever kind, ends it.
void NoteInterrupt(int signal) {
    if (interruptRequested.exchange(true)) return EndAtOnce(signal);
    alarm(grace);
}

/// After a request to end, interrupts what the program waits for, such as a terminal that is stopped while
/// the log is printed. Again and again, since the signal may come just before a call that waits.
void InterruptWait(int signal) {
    if (!interruptRequested) return EndAtOnce(signal);
    alarm(grace);
}

/// A signal that was ignored when the program was started, as nohup arranges it, stays ignored.
void Catch(int signal, void (*handler)(int), int flags = SA_RESTART) {
    struct sigaction present {};
    if (sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

/// A terminal and /dev/null do not count: there two streams may mix.
bool WouldMix(const struct stat& one, const struct stat& other) {
    return !S_ISCHR(one.st_mode) && one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool LeadsTo(const std::string& path, int descriptor) {
    struct stat file {};
    struct stat stream {};
    return stat(path.c_str(), &file) == 0 && fstat(descriptor, &stream) == 0 && WouldMix(stream, file);
}

}  // namespace

void CatchInterrupts() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        Catch(signal, NoteInterrupt);
    for (const int signal : {SIGQUIT, SIGXCPU, SIGUSR1, SIGUSR2, SIGVTALRM, SIGPROF})
        Catch(signal, EndAtOnce);
    Catch(SIGALRM, InterruptWait, 0);
}

bool InterruptRequested() {
    return interruptRequested.load(std::memory_order_relaxed);
}

std::vector<std::string> ProgramArguments(int count, const char* const* arguments) {
    return {arguments + std::min(count, 1), arguments + count};
}

/// Nothing to do: the terminal shows the bytes that it gets.
void PrepareTerminal() {}

bool StandardErrorIsTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

bool IsStandardOutput(const std::string& path) {
    return LeadsTo(path, STDOUT_FILENO);
}

bool IsStandardError(const std::string& path) {
    return LeadsTo(path, STDERR_FILENO);
}

bool StandardStreamsAreOne() {
    struct stat output {};
    struct stat error {};
    return fstat(STDOUT_FILENO, &output) == 0 && fstat(STDERR_FILENO, &error) == 0 && WouldMix(output, error);
}

}  // namespace quillmere
