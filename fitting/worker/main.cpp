// SPDX-License-Identifier: MIT
// The worker of a fit: requests on standard input, answers on standard output, one child a molecule, so that a fatal
// error of the core costs no more than the parameter set it happened on. What the core says goes to standard error. The
// exit code is 1, and a sentence stands there too, where the input isn't requests.
#include "worker/parameter_runs.h"

#include <cmath>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

[[noreturn]] static void RunChild(const Request& request, int firstSet, int descriptor) {
    int code = 1;
    close(STDIN_FILENO);  // whoever writes to the worker has to notice when it ends
    dup2(STDERR_FILENO, STDOUT_FILENO);
    try {
        AnswerParameterSets(request, firstSet, descriptor);
        code = 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velkoran_worker: %s\n", error.what());
    }
    std::fflush(stdout);
    _exit(code);
}

// Passes the answers of a child on; the number of sets that it answered.
static int PassAnswers(const Request& request, int descriptor) {
    Answer answer;
    int answered = 0;
    while (ReadAnswer(descriptor, ValueCount(request), answer)) {
        WriteAnswer(STDOUT_FILENO, answer);
        ++answered;
    }
    return answered;
}

// Waits for the end of a child and tells of a signal: nothing else would.
static void AwaitChild(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) == child && WIFSIGNALED(status)) {
        std::fprintf(stderr, "velkoran_worker: a run ended by signal %d\n", WTERMSIG(status));
    }
}

// The number of sets from the first one on that a child has answered, all of them unless it ended within one.
static int RunSets(const Request& request, int firstSet) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe to a child");
    }
    const pid_t child = fork();
    if (child < 0) {
        throw std::runtime_error("no child could be started");
    }
    if (child == 0) {
        close(ends[0]);
        RunChild(request, firstSet, ends[1]);
    }
    close(ends[1]);
    const int answered = PassAnswers(request, ends[0]);
    close(ends[0]);
    AwaitChild(child);
    return answered;
}

static void AnswerRequest(const Request& request) {
    const int sets = request.Head.VariantCount + 1;
    for (int set = 0; set < sets; ++set) {
        set += RunSets(request, set);
        if (set < sets) {  // within which the child ended
            WriteAnswer(STDOUT_FILENO, {RefusedStatus, std::vector<double>(ValueCount(request), std::nan(""))});
        }
    }
}

int main() {
    try {
        Request request;
        while (ReadRequest(STDIN_FILENO, request)) {
            AnswerRequest(request);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velkoran_worker: %s\n", error.what());
        return 1;
    }
    return 0;
}
