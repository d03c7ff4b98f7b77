// Programs that a test runs beside itself.
#pragma once

#include "platform/com/types.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace dmFirebirdTest {

using Variables = std::map<std::string, std::string>;

// Ended, if it still runs, when the object goes.
class CChildProcess {
public:
    // `variables` come on top of this process's own.
    CChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                  const Variables& variables = {});
    ~CChildProcess();
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    // Of its standard output, which the standard error goes to as well; empty at the end.
    std::string ReadLine();
    void CloseInput();
    // Waits for the end; the exit code.
    int Wait();
    // Without a chance to tidy up.
    void Kill();
    bool IsRunning();

private:
    struct tagParts;
    std::unique_ptr<tagParts> m_Parts;
};

// What opening a database came to in another process.
struct tagOpened {
    HRESULT Status;
    std::wstring Error;
};

// The program beside this one that opens a database.
std::string OpenerPath();
tagOpened OpenElsewhere(const std::wstring& path, const Variables& variables = {},
                        const std::string& user = "SYSDBA", const std::string& password = "masterkey");
tagOpened ReadOpened(CChildProcess& opener);

} // namespace dmFirebirdTest
