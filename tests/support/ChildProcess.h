#pragma once

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace corvalog {

// A program run by a test as a user would run it: its own process, its standard output and
// error kept in files the test reads afterwards, and what it cost (peak memory, time).
class ChildProcess
{
public:
    struct Options {
        // Standard input: a file to read (none: /dev/null).
        std::string stdinPath;
        // Standard output: an open descriptor handed down as it is (a pipe, a FIFO, a file
        // opened for appending), else a file of the test's that out() reads.
        int stdoutFd = -1;
        std::vector<std::pair<std::string, std::string>> environment; // added or replaced
    };

    ChildProcess(const std::vector<std::string> &argv, const Options &options);
    explicit ChildProcess(const std::vector<std::string> &argv)
        : ChildProcess(argv, Options())
    {
    }
    ~ChildProcess(); // a child still running is killed
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    void signal(int number);
    // Waits for the end; false when it has not ended within the time.
    bool wait(int timeoutMs);
    bool exited() const { return m_done; }
    int exitCode() const { return m_exitCode; } // -1 when ended by a signal
    int termSignal() const { return m_signal; }
    long maxRssKb() const { return m_maxRssKb; }
    double seconds() const { return m_seconds; } // from start to end

    std::string out() const;
    std::string err() const;

private:
    pid_t m_pid = -1;
    std::string m_outPath;
    std::string m_errPath;
    bool m_done = false;
    int m_exitCode = -1;
    int m_signal = 0;
    long m_maxRssKb = 0;
    double m_started = 0;
    double m_seconds = 0;
};

// Runs a program to its end (killing it after the time-out).
struct ChildResult {
    int exitCode = -1;
    int termSignal = 0;
    std::string out;
    std::string err;
    long maxRssKb = 0;
    double seconds = 0;
};
ChildResult runChild(const std::vector<std::string> &argv,
    const ChildProcess::Options &options = {}, int timeoutMs = 60000);

} // namespace corvalog
