#include "Process.h"

#include "platform/file.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace sqCliTest {

using namespace std::chrono_literals;

namespace {

void RaiseUnless(bool good, const char* what) {
    if (!good)
        throw std::system_error(errno, std::generic_category(), what);
}

// A program's three standard streams, open in this process until it is started.
class CStreams {
public:
    ~CStreams() { Close(); }

    void Open(int stream, const std::string& path, int flags) {
        m_Descriptors[stream] = open(path.c_str(), flags | O_CLOEXEC, 0600);
        RaiseUnless(m_Descriptors[stream] >= 0, path.c_str());
    }
    // Gives the other end.
    int OpenPipe(int stream) {
        std::array<int, 2> ends;
        RaiseUnless(pipe2(ends.data(), O_CLOEXEC) == 0, "pipe2");
        m_Descriptors[stream] = ends[1];
        return ends[0];
    }
    // In the new process.
    bool Use() const noexcept {
        for (int stream = 0; stream < 3; ++stream)
            if (dup2(m_Descriptors[stream], stream) < 0)
                return false;
        return true;
    }
    void Close() noexcept {
        for (int& descriptor : m_Descriptors)
            if (const int open = std::exchange(descriptor, -1); open >= 0)
                close(open);
    }

private:
    std::array<int, 3> m_Descriptors{-1, -1, -1};
};

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Whatever becomes of the test, the program does not outlive it. The status is 127 when it could not be run.
pid_t Start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const Environment& environment, CStreams& streams) {
    std::vector<std::string> line{program.string()};
    line.insert(line.end(), arguments.begin(), arguments.end());
    Environment variables = environment;
    const std::vector<char*> argv = Pointers(line);
    const std::vector<char*> envp = Pointers(variables);
    const pid_t test = getpid();
    const pid_t process = fork();
    RaiseUnless(process >= 0, "fork");
    if (process == 0) {
        // Between fork and exec only what a signal handler may do, too: the test's other threads are not here.
        if (prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == test && streams.Use())
            execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    streams.Close();
    return process;
}

int Wait(pid_t process) {
    int status = 0;
    RaiseUnless(waitpid(process, &status, 0) == process, "waitpid");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::chrono::nanoseconds ProcessorTime(pid_t process) {
    clockid_t clock = 0;
    timespec time{};
    RaiseUnless(clock_getcpuclockid(process, &clock) == 0 && clock_gettime(clock, &time) == 0,
                "clock_getcpuclockid");
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// Appends what there is to read, waiting for something; false at the end.
bool ReadSome(int descriptor, std::string& text) {
    std::array<char, 4096> part;
    const ssize_t count = read(descriptor, part.data(), part.size());
    if (count > 0)
        text.append(part.data(), static_cast<std::size_t>(count));
    return count > 0;
}

// The master side of a terminal 100 characters wide.
class CTerminal {
public:
    CTerminal() : m_Master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        RaiseUnless(m_Master >= 0 && grantpt(m_Master) == 0 && unlockpt(m_Master) == 0, "posix_openpt");
        std::array<char, 128> name;
        RaiseUnless(ptsname_r(m_Master, name.data(), name.size()) == 0, "ptsname_r");
        m_Name = name.data();
        const winsize size{.ws_row = 25, .ws_col = 100, .ws_xpixel = 0, .ws_ypixel = 0};
        ioctl(m_Master, TIOCSWINSZ, &size);
    }
    ~CTerminal() { close(m_Master); }
    CTerminal(const CTerminal&) = delete;
    CTerminal& operator=(const CTerminal&) = delete;

    const std::string& Name() const { return m_Name; }
    // Until the last process has closed the other side.
    std::string ReadAll() const {
        std::string text;
        while (ReadSome(m_Master, text)) {
        }
        return text;
    }

private:
    int m_Master;
    std::string m_Name;
};

} // namespace

tagEnd RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const Environment& environment, const std::filesystem::path& folder) {
    const auto output = folder / "stdout";
    tagEnd end = RunProgramInto(output, program, arguments, environment, folder);
    end.Output = platform::ReadFile(output);
    return end;
}

tagEnd RunProgramInto(const std::filesystem::path& output, const std::filesystem::path& program,
                      const std::vector<std::string>& arguments, const Environment& environment,
                      const std::filesystem::path& folder) {
    const auto errors = folder / "stderr";
    CStreams streams;
    streams.Open(STDIN_FILENO, "/dev/null", O_RDONLY);
    streams.Open(STDOUT_FILENO, output, O_WRONLY | O_CREAT | O_TRUNC);
    streams.Open(STDERR_FILENO, errors, O_WRONLY | O_CREAT | O_TRUNC);
    const int status = Wait(Start(program, arguments, environment, streams));
    return {status, {}, platform::ReadFile(errors)};
}

tagEnd RunProgramUnread(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                        const Environment& environment, const std::filesystem::path& folder) {
    const auto errors = folder / "stderr";
    CStreams streams;
    streams.Open(STDIN_FILENO, "/dev/null", O_RDONLY);
    close(streams.OpenPipe(STDOUT_FILENO));
    streams.Open(STDERR_FILENO, errors, O_WRONLY | O_CREAT | O_TRUNC);
    const int status = Wait(Start(program, arguments, environment, streams));
    return {status, {}, platform::ReadFile(errors)};
}

tagEnd RunInTerminal(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const Environment& environment) {
    const CTerminal terminal;
    CStreams streams;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        streams.Open(stream, terminal.Name(), O_RDWR | O_NOCTTY);
    const pid_t process = Start(program, arguments, environment, streams);
    std::string text = terminal.ReadAll();
    return {Wait(process), std::move(text), {}};
}

CRunningProgram::CRunningProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                                 const Environment& environment) {
    CStreams streams;
    streams.Open(STDIN_FILENO, "/dev/null", O_RDONLY);
    m_Output = streams.OpenPipe(STDOUT_FILENO);
    m_ErrorStream = streams.OpenPipe(STDERR_FILENO);
    m_Process = Start(program, arguments, environment, streams);
}

CRunningProgram::~CRunningProgram() {
    if (m_Process != 0) {
        kill(m_Process, SIGKILL);
        waitpid(m_Process, nullptr, 0);
    }
    if (m_Output >= 0)
        CloseOutput();
    close(m_ErrorStream);
}

bool CRunningProgram::AwaitError(std::string_view text) {
    while (m_Errors.find(text) == std::string::npos)
        if (!ReadSome(m_ErrorStream, m_Errors))
            return false;
    return true;
}

bool CRunningProgram::AwaitOutput(std::size_t bytes) {
    while (m_Said.size() < bytes)
        if (!ReadSome(m_Output, m_Said))
            return false;
    return true;
}

// Its usage of resources would not tell: that has the memory of the process it was forked from, too.
std::size_t CRunningProgram::PeakMemory() const {
    constexpr std::string_view name = "VmHWM:";
    constexpr std::size_t kilobyte = 1024;
    const std::string status = platform::ReadFile("/proc/" + std::to_string(m_Process) + "/status");
    const std::size_t place = status.find(name);
    if (place == std::string::npos)
        throw std::runtime_error("the program has ended");
    return std::stoul(status.substr(place + name.size())) * kilobyte;
}

void CRunningProgram::CloseOutput() { close(std::exchange(m_Output, -1)); }

void CRunningProgram::Signal(int signal) const { RaiseUnless(kill(m_Process, signal) == 0, "kill"); }

// By its own clock, which a busy machine does not move on: whatever sleeps stands still, whatever spins gets its
// second.
bool CRunningProgram::AwaitRest() const {
    const auto start = ProcessorTime(m_Process);
    for (auto before = start; before - start < 1s;) {
        std::this_thread::sleep_for(100ms);
        const auto now = ProcessorTime(m_Process);
        if (now == before)
            return true;
        before = now;
    }
    return false;
}

tagEnd CRunningProgram::Wait() {
    while (m_Output >= 0 && ReadSome(m_Output, m_Said)) {
    }
    while (ReadSome(m_ErrorStream, m_Errors)) {
    }
    return {sqCliTest::Wait(std::exchange(m_Process, 0)), m_Said, m_Errors};
}

} // namespace sqCliTest
