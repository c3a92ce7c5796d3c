// `tock --shell "start X"` against a bare Qt Core program that writes one file (bare_core), in
// one run, and against the same program writing its file as durably as Tock saves (bare_core FILE
// durable): the three start in turn, so a machine that speeds up or slows down during the run
// moves all alike. Each run's CPU time (user + system) comes from wait4, the wall time from the
// monotonic clock, both covering the whole process from exec to exit. Also counts the shared
// objects each one initialises (the dynamic loader's own report, LD_DEBUG=libs).
//   terminal_bench TOCK BARE_CORE [RUNS]   (default 40 runs of each after 3 unmeasured)
// Prints a Markdown report for docs/PERFORMANCE.md. Uses a temporary data folder and settings.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

struct Sample {
    double cpuMs = 0;
    double wallMs = 0;
};

double nowMs()
{
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

double ms(const timeval &t)
{
    return double(t.tv_sec) * 1e3 + double(t.tv_usec) / 1e3;
}

// Runs `arguments` with output thrown away, or with standard error into `errors` when given.
Sample run(const std::vector<std::string> &arguments, std::string *errors = nullptr, bool traceLibraries = false)
{
    int pipeFds[2] = {-1, -1};
    if (errors && ::pipe(pipeFds) != 0)
        std::exit(1);
    const double start = nowMs();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(errors ? pipeFds[1] : null, STDERR_FILENO);
        if (traceLibraries)
            ::setenv("LD_DEBUG", "libs", 1);
        std::vector<char *> argv;
        for (const std::string &a : arguments)
            argv.push_back(const_cast<char *>(a.c_str()));
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    if (errors) {
        ::close(pipeFds[1]);
        char buffer[65536];
        ssize_t count;
        while ((count = ::read(pipeFds[0], buffer, sizeof buffer)) > 0)
            errors->append(buffer, size_t(count));
        ::close(pipeFds[0]);
    }
    int status = 0;
    rusage usage{};
    ::wait4(pid, &status, 0, &usage);
    const double wall = nowMs() - start;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "terminal_bench: %s failed (status %d)\n", arguments[0].c_str(), status);
        std::exit(1);
    }
    return {ms(usage.ru_utime) + ms(usage.ru_stime), wall};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

int librariesOf(const std::vector<std::string> &arguments)
{
    std::string errors;
    run(arguments, &errors, true);
    int count = 0;
    for (size_t at = 0; (at = errors.find("calling init:", at)) != std::string::npos; ++at)
        ++count;
    return count;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: terminal_bench TOCK BARE_CORE [RUNS]\n");
        return 2;
    }
    const int runs = argc > 3 ? std::max(1, std::atoi(argv[3])) : 40;
    char folder[] = "/tmp/terminal-bench-XXXXXX";
    if (!::mkdtemp(folder))
        return 1;
    const std::string root = folder;
    ::setenv("TOCK_DATA_DIR", (root + "/data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), 1);
    const std::vector<std::string> tock{argv[1], "--shell", "start X"};
    const std::vector<std::string> bare{argv[2], root + "/bare.json"};
    const std::vector<std::string> durable{argv[2], root + "/durable.json", "durable"};
    run({argv[1], "--shell", "rm all", "add X"});

    for (int i = 0; i < 3; ++i) {
        run(tock);
        run(bare);
        run(durable);
    }
    struct Series {
        std::vector<double> cpu, wall, ratios;
    } tockRuns, bareRuns, durableRuns;
    for (int i = 0; i < runs; ++i) {
        const Sample a = run(tock);
        const Sample b = run(bare);
        const Sample c = run(durable);
        for (auto [series, sample] : {std::pair{&tockRuns, a}, std::pair{&bareRuns, b}, std::pair{&durableRuns, c}}) {
            series->cpu.push_back(sample.cpuMs);
            series->wall.push_back(sample.wallMs);
        }
        if (b.cpuMs > 0)
            bareRuns.ratios.push_back(a.cpuMs / b.cpuMs);
        if (c.cpuMs > 0)
            durableRuns.ratios.push_back(a.cpuMs / c.cpuMs);
    }
    const int tockLibraries = librariesOf(tock);
    const int bareLibraries = librariesOf(bare);
    (void)std::system(("rm -rf '" + root + "'").c_str());

    const auto row = [](const char *name, const Series &series, int libraries) {
        std::printf("| %s | %.1f | %.1f – %.1f | %.1f | %d |\n", name, median(series.cpu),
                    *std::min_element(series.cpu.begin(), series.cpu.end()),
                    *std::max_element(series.cpu.begin(), series.cpu.end()), median(series.wall), libraries);
    };
    std::printf("| program | CPU median (ms) | CPU min – max (ms) | wall median (ms) | shared objects initialised |\n");
    std::printf("|---|---|---|---|---|\n");
    row("`tock --shell \"start X\"`", tockRuns, tockLibraries);
    row("bare Qt Core, one file", bareRuns, bareLibraries);
    row("bare Qt Core, one file saved durably", durableRuns, bareLibraries);
    std::printf("\nCPU ratio tock / bare: %.2f (median of %d pairs run in turn; %.2f as a ratio of medians)\n",
                median(bareRuns.ratios), int(bareRuns.ratios.size()), median(tockRuns.cpu) / median(bareRuns.cpu));
    std::printf("CPU ratio tock / bare saving durably: %.2f (median of pairs; %.2f as a ratio of medians)\n",
                median(durableRuns.ratios), median(tockRuns.cpu) / median(durableRuns.cpu));
    return 0;
}
