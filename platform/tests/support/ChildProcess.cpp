#include "ChildProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

void RaiseUnless(bool good, const char* what) {
    if (!good)
        throw std::system_error(errno, std::generic_category(), what);
}

// The status is 127 when the program could not be run.
int Start(const std::filesystem::path& program, std::vector<std::string> line, int output) {
    line.insert(line.begin(), program.string());
    std::vector<char*> arguments;
    for (std::string& argument : line)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    const pid_t test = getpid();
    const pid_t process = fork();
    RaiseUnless(process >= 0, "fork");
    if (process == 0) {
        // Between fork and exec only what a signal handler may do, too: the test's other threads are not here.
        if (prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == test && dup2(output, STDOUT_FILENO) >= 0)
            execv(arguments.front(), arguments.data());
        _exit(127);
    }
    return process;
}

} // namespace

CChildProcess::CChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    std::array<int, 2> ends;
    RaiseUnless(pipe2(ends.data(), O_CLOEXEC) == 0, "pipe2");
    m_Output = ends[0];
    m_Process = Start(program, arguments, ends[1]);
    // The child alone holds the other end, so that its end is the end of what can be read.
    close(ends[1]);
}

CChildProcess::~CChildProcess() {
    if (m_Process != 0) {
        kill(m_Process, SIGKILL);
        waitpid(m_Process, nullptr, 0);
    }
    close(m_Output);
}

bool CChildProcess::ReadLine(std::string& line) {
    std::size_t end = 0;
    while ((end = m_Unread.find('\n')) == m_Unread.npos) {
        std::array<char, 4096> part;
        const ssize_t count = read(m_Output, part.data(), part.size());
        if (count < 0 && errno == EINTR)
            continue;
        RaiseUnless(count >= 0, "read");
        if (count == 0)
            return false;
        m_Unread.append(part.data(), static_cast<std::size_t>(count));
    }
    line = m_Unread.substr(0, end);
    m_Unread.erase(0, end + 1);
    return true;
}

void CChildProcess::Kill() { RaiseUnless(kill(m_Process, SIGKILL) == 0, "kill"); }

int CChildProcess::Wait() {
    int status = 0;
    RaiseUnless(waitpid(m_Process, &status, 0) == m_Process, "waitpid");
    m_Process = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace platform
