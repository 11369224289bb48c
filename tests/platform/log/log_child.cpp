// A process that logs: log_child COMMAND ARGUMENTS...
#include "log/late.h"

#include "ormeldb/platform/liblog.h"

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>

namespace {

void *instance = nullptr;

void open(const char *file) {
    const LIB_LOG_INSTANCE_CFG cfg{nullptr, "LOG_VEMLO", file, 50, 20, 60, 0};
    instance = LIB_LOG_CreateInstance(&cfg);
}

void print(const std::string &text) {
    const std::string line = text + "\r\n";
    LIB_LOG_Print(instance, line.data(), static_cast<uint32_t>(line.size()), 5);
}

// Tells the test, and waits until the test closes our input.
void tell(const char *word) {
    std::printf("%s\n", word);
    std::fflush(stdout);
}
void waitForTest() {
    while (std::getchar() != EOF) {
    }
}

// Waits for a child process; its exit code, or 255.
int waitFor(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

// config KEY...: what the configuration gave.
int showConfig(char **keys) {
    std::printf("path=%s\nslot=%d\n", g_acLogPath, g_frame_slot_id);
    for (; *keys != nullptr; ++keys) {
        const char *value = OPB_GetLogConfig(*keys);
        std::printf("%s %s\n", *keys, value != nullptr ? (std::string("is <") + value + ">").c_str() : "is not set");
    }
    return 0;
}

// lines FILE COUNT END: lines, and one of the ends of a process.
int writeLines(char **args) {
    open(args[0]);
    for (int i = 0; i < std::atoi(args[1]); ++i)
        print("line " + std::to_string(i));
    const std::string end = args[2];
    if (end == "exit")
        std::exit(0);
    if (end == "quick_exit")
        std::quick_exit(0);
    if (end == "delete")
        return LIB_LOG_DeleteInstance(instance);
    return 0;
}

// hold FILE: keeps the file, with one line in it, until the test is done.
int hold(char **args) {
    open(args[0]);
    print("held");
    tell("ready");
    waitForTest();
    return 0;
}

// abort FILE: one line, and when the test has seen it another one and abort().
int abortAfterLine(char **args) {
    open(args[0]);
    print("first");
    waitForTest();
    print("second");
    std::abort();
}

// after-delete FILE: a line before the instance is deleted, and one after.
int logAfterDelete(char **args) {
    open(args[0]);
    print("before");
    LIB_LOG_DeleteInstance(instance);
    print("after");
    return 0;
}

// late FILE: lines from handlers of the end, and from the destructors of the program and of a library.
int logLate(char **args) {
    static const struct AtEnd {
        ~AtEnd() { print("static destructor"); }
    } atEnd;
    open(args[0]);
    std::atexit([] { print("exit handler"); });
    printWhenUnloaded(print, "library destructor");
    print("main");
    return 0;
}

// fork FILE: lines of a parent and its child, with the parent's pending at the fork.
int forkAndLog(char **args) {
    open(args[0]);
    print("parent before");
    const pid_t child = fork();
    if (child == 0) {
        print("child " + std::to_string(getpid()));
        std::exit(0);
    }
    const int code = waitFor(child);
    print("parent after");
    return code;
}

// fork-silent FILE: a child that logs nothing and ends as processes do.
int forkSilently(char **args) {
    open(args[0]);
    print("parent");
    const pid_t child = fork();
    if (child == 0)
        std::exit(0);
    return waitFor(child);
}

// daemon FILE: a child that goes on when its parent has ended.
int becomeDaemon(char **args) {
    open(args[0]);
    print("parent");
    const pid_t parent = getpid();
    if (fork() != 0)
        std::_Exit(0);
    while (getppid() == parent)
        usleep(1000);
    print("daemon");
    return 0;
}

// fork-busy FILE: forks while threads log; each child logs a line. Ends at all only where no child hangs.
int forkWhileLogging(char **args) {
    open(args[0]);
    std::atomic<bool> done{false};
    std::atomic<int> busy{0};
    const auto log = [&] {
        print("thread");
        for (++busy; !done;)
            print("thread");
    };
    std::thread threads[] = {std::thread(log), std::thread(log), std::thread(log)};
    while (busy < 3) // the sanitizers' allocators do not take a fork while a thread starts
        std::this_thread::yield();
    int failures = 0;
    for (int i = 0; i < 20; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            print("child");
            LIB_LOG_DeleteInstance(instance);
            std::_Exit(0);
        }
        failures += waitFor(child);
    }
    done = true;
    for (auto &thread : threads)
        thread.join();
    return failures;
}

// user UID FILE: a line as another user.
int logAsUser(char **args) {
    if (setuid(static_cast<uid_t>(std::atoi(args[0]))) != 0)
        return 1;
    open(args[1]);
    print("user");
    return instance != nullptr ? 0 : 2;
}

// leave FILE: the main thread ends, and the process when no thread is left.
int leaveMainThread(char **args) {
    open(args[0]);
    print("main thread");
    pthread_exit(nullptr);
}

const std::map<std::string, int (*)(char **)> commands = {
    {"config", showConfig},   {"lines", writeLines},
    {"hold", hold},           {"abort", abortAfterLine},
    {"late", logLate},        {"after-delete", logAfterDelete},
    {"fork", forkAndLog},     {"fork-silent", forkSilently},
    {"daemon", becomeDaemon}, {"fork-busy", forkWhileLogging},
    {"user", logAsUser},      {"leave", leaveMainThread},
};

} // namespace

int main(int argc, char **argv) {
    const auto command = argc > 1 ? commands.find(argv[1]) : commands.end();
    return command != commands.end() ? command->second(argv + 2) : 2;
}
