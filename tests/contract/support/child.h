// Children of the test's own process.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace contract {

// One that answers by the work's status and ends as programs do.
template <class Work> pid_t startChild(Work work) noexcept {
    const pid_t child = fork();
    if (child == 0)
        std::exit(work());
    return child;
}

// Its answer when it has ended; -1 where it ended otherwise.
inline int answerOf(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace contract
