#include "Benchmarks/compare.d/Side.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void Fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

}  // namespace

Cost RunWork(const Work& work) {
    int ends[2];
    if (pipe(ends) != 0) Fail("pipe");
    const pid_t child = fork();
    if (child < 0) Fail("fork");
    if (child == 0) {
        close(ends[0]);
        Cost cost;
        cost.seconds = work();
        rusage own{};
        rusage programs{};
        getrusage(RUSAGE_SELF, &own);
        getrusage(RUSAGE_CHILDREN, &programs);
        cost.peakKib = programs.ru_maxrss > own.ru_maxrss ? programs.ru_maxrss : own.ru_maxrss;
        _exit(write(ends[1], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost) ? 0 : 1);
    }
    close(ends[1]);
    Cost cost;
    const bool told = read(ends[0], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!told || status != 0) {
        std::fprintf(stderr, "one side of the comparison failed\n");
        std::exit(1);
    }
    return cost;
}

double RunProgram(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    return Timed([&] {
        const pid_t child = fork();
        if (child == 0) {
            const int nothing = open("/dev/null", O_WRONLY);
            dup2(nothing, STDOUT_FILENO);
            execvp(arguments[0], arguments.data());
            _exit(127);
        }
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) < 0 || status != 0) Fail(words[0].c_str());
    });
}

double Timed(const std::function<void()>& function) {
    const auto start = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
