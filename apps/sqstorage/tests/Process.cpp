#include "Process.h"

#include "platform/file.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace sqCliTest {

namespace {

void RaiseUnless(bool good, const char* what) {
    if (!good)
        throw std::system_error(errno, std::generic_category(), what);
}

class CFileActions {
public:
    CFileActions() { posix_spawn_file_actions_init(&m_Actions); }
    ~CFileActions() { posix_spawn_file_actions_destroy(&m_Actions); }
    CFileActions(const CFileActions&) = delete;
    CFileActions& operator=(const CFileActions&) = delete;

    void Open(int descriptor, const std::string& path, int flags) {
        posix_spawn_file_actions_addopen(&m_Actions, descriptor, path.c_str(), flags, 0600);
    }
    const posix_spawn_file_actions_t* Get() const { return &m_Actions; }

private:
    posix_spawn_file_actions_t m_Actions;
};

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

pid_t Start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const Environment& environment, const CFileActions& actions) {
    std::vector<std::string> line{program.string()};
    line.insert(line.end(), arguments.begin(), arguments.end());
    Environment variables = environment;
    pid_t process = 0;
    errno = posix_spawn(&process, program.c_str(), actions.Get(), nullptr, Pointers(line).data(),
                        Pointers(variables).data());
    RaiseUnless(errno == 0, "posix_spawn");
    return process;
}

int Wait(pid_t process) {
    int status = 0;
    RaiseUnless(waitpid(process, &status, 0) == process, "waitpid");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
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
        std::array<char, 4096> part;
        for (ssize_t count = 0; (count = read(m_Master, part.data(), part.size())) > 0;)
            text.append(part.data(), static_cast<std::size_t>(count));
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
    const auto errors = folder / "stderr";
    CFileActions actions;
    actions.Open(STDIN_FILENO, "/dev/null", O_RDONLY);
    actions.Open(STDOUT_FILENO, output, O_WRONLY | O_CREAT | O_TRUNC);
    actions.Open(STDERR_FILENO, errors, O_WRONLY | O_CREAT | O_TRUNC);
    const int status = Wait(Start(program, arguments, environment, actions));
    return {status, platform::ReadFile(output), platform::ReadFile(errors)};
}

tagEnd RunInTerminal(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const Environment& environment) {
    const CTerminal terminal;
    CFileActions actions;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        actions.Open(stream, terminal.Name(), O_RDWR | O_NOCTTY);
    const pid_t process = Start(program, arguments, environment, actions);
    std::string text = terminal.ReadAll();
    return {Wait(process), std::move(text), {}};
}

} // namespace sqCliTest
