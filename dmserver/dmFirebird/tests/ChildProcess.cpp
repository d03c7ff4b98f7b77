#include "ChildProcess.h"

#include "platform/file.h"
#include "platform/process.h"
#include "platform/text.h"

#include <boost/process.hpp>

namespace dmFirebirdTest {

namespace process = boost::process;

struct CChildProcess::tagParts {
    process::ipstream Output;
    process::opstream Input;
    process::child Child;
};

CChildProcess::CChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                             const Variables& variables)
    : m_Parts(std::make_unique<tagParts>()) {
    process::environment environment = boost::this_process::environment();
    for (const auto& [name, value] : variables)
        environment[name] = value;
    m_Parts->Child =
        process::child(process::exe = program, process::args = arguments, environment,
                       process::std_in<m_Parts->Input, (process::std_out & process::std_err)> m_Parts->Output);
}

CChildProcess::~CChildProcess() {
    std::error_code ignored;
    if (m_Parts->Child.running(ignored))
        Kill();
}

std::string CChildProcess::ReadLine() {
    std::string line;
    std::getline(m_Parts->Output, line);
    return line;
}

void CChildProcess::CloseInput() {
    m_Parts->Input.flush();
    m_Parts->Input.pipe().close();
}

int CChildProcess::Wait() {
    m_Parts->Child.wait();
    return m_Parts->Child.exit_code();
}

// The library's own way of terminating a process does not wait until it is gone.
void CChildProcess::Kill() {
    process::system("/bin/sh", "-c", "kill -KILL " + std::to_string(m_Parts->Child.id()));
    std::error_code ignored;
    m_Parts->Child.wait(ignored);
}

bool CChildProcess::IsRunning() {
    std::error_code ignored;
    return m_Parts->Child.running(ignored);
}

std::string OpenerPath() {
    return (platform::ToPath(platform::ExecutablePath()).parent_path() / "dmFirebird_opener").string();
}

tagOpened ReadOpened(CChildProcess& opener) {
    const std::string status = opener.ReadLine();
    if (status.empty())
        throw std::runtime_error("the opener said nothing");
    return {static_cast<HRESULT>(std::stol(status)), platform::FromUtf8(opener.ReadLine())};
}

tagOpened OpenElsewhere(const std::wstring& path, const Variables& variables, const std::string& user,
                        const std::string& password) {
    CChildProcess opener(OpenerPath(), {platform::ToUtf8(path), user, password}, variables);
    const tagOpened opened = ReadOpened(opener);
    opener.Wait();
    return opened;
}

} // namespace dmFirebirdTest
