#include "ChildProcess.h"

#include "FileText.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

namespace corvalog {

namespace {

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::string tempFile(const char *what)
{
    const char *dir = std::getenv("TMPDIR");
    std::string pattern
        = std::string(dir && *dir ? dir : "/tmp") + "/corvalog-child-" + what + "-XXXXXX";
    const int fd = ::mkstemp(pattern.data());
    if (fd >= 0)
        ::close(fd);
    return pattern;
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string> &argv, const Options &options)
    : m_outPath(options.stdoutFd >= 0 ? std::string() : tempFile("out"))
    , m_errPath(tempFile("err"))
{
    std::vector<char *> args;
    for (const std::string &a : argv)
        args.push_back(const_cast<char *>(a.c_str()));
    args.push_back(nullptr);
    // The environment is made before the fork: the child may only make async-signal-safe calls.
    std::vector<std::string> environment;
    for (char **e = environ; *e; ++e) {
        const std::string entry = *e;
        const std::string name = entry.substr(0, entry.find('='));
        bool replaced = false;
        for (const auto &change : options.environment)
            replaced = replaced || change.first == name;
        if (!replaced)
            environment.push_back(entry);
    }
    for (const auto &[name, value] : options.environment)
        environment.push_back(name + "=" + value);
    std::vector<char *> envp;
    for (const std::string &e : environment)
        envp.push_back(const_cast<char *>(e.c_str()));
    envp.push_back(nullptr);
    m_started = now();
    m_pid = ::fork();
    if (m_pid != 0)
        return;
    // The child: only async-signal-safe calls until exec.
    const int in
        = ::open(options.stdinPath.empty() ? "/dev/null" : options.stdinPath.c_str(), O_RDONLY);
    const int out
        = options.stdoutFd >= 0 ? options.stdoutFd : ::open(m_outPath.c_str(), O_WRONLY | O_TRUNC);
    const int err = ::open(m_errPath.c_str(), O_WRONLY | O_TRUNC);
    ::dup2(in, 0);
    ::dup2(out, 1);
    ::dup2(err, 2);
    for (int fd = 3; fd < 1024; ++fd)
        ::close(fd);
    ::signal(SIGPIPE, SIG_DFL);
    ::execve(args[0], args.data(), envp.data());
    ::_exit(127);
}

ChildProcess::~ChildProcess()
{
    if (!m_done && m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        wait(10000);
    }
    if (!m_outPath.empty())
        ::unlink(m_outPath.c_str());
    ::unlink(m_errPath.c_str());
}

void ChildProcess::signal(int number)
{
    if (!m_done && m_pid > 0)
        ::kill(m_pid, number);
}

bool ChildProcess::wait(int timeoutMs)
{
    const double deadline = now() + timeoutMs / 1000.0;
    while (!m_done) {
        int status = 0;
        struct rusage usage {
        };
        const pid_t r = ::wait4(m_pid, &status, WNOHANG, &usage);
        if (r == m_pid) {
            m_done = true;
            m_seconds = now() - m_started;
            m_maxRssKb = usage.ru_maxrss;
            if (WIFEXITED(status)) {
                m_exitCode = WEXITSTATUS(status);
            } else if (WIFSIGNALED(status)) {
                m_signal = WTERMSIG(status);
            }
            break;
        }
        if (r < 0 && errno != EINTR)
            return false;
        if (now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

std::string ChildProcess::out() const
{
    return m_outPath.empty() ? std::string() : fileText(m_outPath);
}

std::string ChildProcess::err() const
{
    return fileText(m_errPath);
}

ChildResult runChild(
    const std::vector<std::string> &argv, const ChildProcess::Options &options, int timeoutMs)
{
    ChildProcess child(argv, options);
    if (!child.wait(timeoutMs)) {
        child.signal(SIGKILL);
        child.wait(10000);
    }
    return { child.exitCode(), child.termSignal(), child.out(), child.err(), child.maxRssKb(),
        child.seconds() };
}

} // namespace corvalog
