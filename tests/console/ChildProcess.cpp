#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

struct Pipe {
    int read;
    int write;
};

Pipe MakePipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe");
    }
    return {ends[0], ends[1]};
}

Pipe MakeTerminal()
{
    Pipe ends{};
    if (::openpty(&ends.read, &ends.write, nullptr, nullptr, nullptr) != 0) {
        throw std::runtime_error("openpty");
    }
    ::fcntl(ends.read, F_SETFD, FD_CLOEXEC);
    ::fcntl(ends.write, F_SETFD, FD_CLOEXEC);
    return ends;
}

void CloseIfOpen(int& file)
{
    if (file >= 0) {
        ::close(file);
        file = -1;
    }
}

/// Takes what is there to read. @return false at the end.
bool ReadSome(int file, std::string& to)
{
    std::array<char, 65536> buffer{};
    const ssize_t count = ::read(file, buffer.data(), buffer.size());
    if (count > 0) {
        to.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return count > 0 || (count < 0 && errno == EINTR);
}

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    std::ranges::transform(texts, std::back_inserter(pointers), [](std::string& text) { return text.data(); });
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> EnvironmentOf(const ChildOptions& options)
{
    std::vector<std::string> environment;
    for (const auto& [name, value] : options.environment) {
        environment.push_back(std::string(name).append("=").append(value));
    }
    for (const char* passed : {"LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS"}) {
        if (const char* value = std::getenv(passed)) {
            environment.push_back(std::string(passed) + "=" + value);
        }
    }
    return environment;
}

} // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const ChildOptions& options)
    : m_input(options.input)
{
    std::signal(SIGPIPE, SIG_IGN);
    Run(program, arguments, options);
}

ChildProcess::~ChildProcess()
{
    CloseIfOpen(m_in);
    CloseIfOpen(m_out);
    CloseIfOpen(m_err);
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
}

void ChildProcess::Run(const std::string& program, const std::vector<std::string>& arguments,
                       const ChildOptions& options)
{
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = EnvironmentOf(options);
    const std::vector<char*> argv = Pointers(words);
    const std::vector<char*> envp = Pointers(environment);
    Pipe out = options.outIsTerminal ? MakeTerminal() : MakePipe();
    Pipe err = options.terminal ? MakeTerminal() : MakePipe();
    Pipe in = options.terminal ? Pipe{::fcntl(err.write, F_DUPFD_CLOEXEC, 0), ::fcntl(err.read, F_DUPFD_CLOEXEC, 0)}
                               : MakePipe();
    m_pid = ::fork();
    if (m_pid == 0) {
        ::dup2(in.read, STDIN_FILENO);
        ::dup2(options.output ? ::open(options.output->c_str(), O_WRONLY | O_CLOEXEC) : out.write, STDOUT_FILENO);
        ::dup2(err.write, STDERR_FILENO);
        if (options.outIsClosed) {
            ::close(STDOUT_FILENO);
        }
        if (options.largestFile) {
            const rlimit limit{*options.largestFile, *options.largestFile};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        std::signal(SIGPIPE, SIG_DFL);
        if (::chdir(options.directory.c_str()) == 0) {
            ::execve(program.c_str(), argv.data(), envp.data());
        }
        ::_exit(127);
    }
    ::close(in.read);
    ::close(out.write);
    ::close(err.write);
    m_in = in.write;
    m_out = out.read;
    m_err = err.read;
}

void ChildProcess::Signal(int signal) const { ::kill(m_pid, signal); }

ChildResult ChildProcess::Finish()
{
    Pump();
    int status = 0;
    ::waitpid(m_pid, &status, 0);
    m_pid = -1;
    m_result.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    m_result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return std::move(m_result);
}

void ChildProcess::WaitForError(const std::string& text)
{
    while (m_result.err.find(text) == std::string::npos && ReadSome(m_err, m_result.err)) {
    }
}

void ChildProcess::WaitForNextError(const std::string& text)
{
    std::size_t found = std::string::npos;
    while ((found = m_result.err.find(text, m_errorsSeen)) == std::string::npos && ReadSome(m_err, m_result.err)) {
    }
    m_errorsSeen = found == std::string::npos ? m_result.err.size() : found + text.size();
}

void ChildProcess::Type(const std::string& text) const
{
    if (::write(m_in, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("write");
    }
}

bool ChildProcess::HasEnded() const
{
    siginfo_t state{};
    return ::waitid(P_PID, static_cast<id_t>(m_pid), &state, WEXITED | WNOHANG | WNOWAIT) == 0 && state.si_pid == m_pid;
}

void ChildProcess::Pump()
{
    std::string_view input = m_input;
    while (m_out >= 0 || m_err >= 0) {
        if (input.empty()) {
            CloseIfOpen(m_in);
        }
        std::array<pollfd, 3> files = {{{m_in, POLLOUT, 0}, {m_out, POLLIN, 0}, {m_err, POLLIN, 0}}};
        ::poll(files.data(), files.size(), -1);
        if (files[0].revents != 0) {
            const ssize_t count = ::write(m_in, input.data(), std::min<std::size_t>(input.size(), 4096));
            input = count > 0 ? input.substr(static_cast<std::size_t>(count)) : std::string_view();
        }
        if (files[1].revents != 0 && !ReadSome(m_out, m_result.out)) {
            CloseIfOpen(m_out);
        }
        if (files[2].revents != 0 && !ReadSome(m_err, m_result.err)) {
            CloseIfOpen(m_err);
        }
    }
}
