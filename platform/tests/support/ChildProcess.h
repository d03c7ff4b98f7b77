#pragma once
// A program that a test starts and may kill at any moment. It has the test's environment and error stream, and what
// it writes to its standard output is read line by line. It does not outlive this object, nor the test. One thread.
//
// What the system refuses raises std::system_error.

#include <filesystem>
#include <string>
#include <vector>

namespace platform {

class CChildProcess {
public:
    CChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments);
    ~CChildProcess();
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    // Waits for a line, which comes without its end. False when there will be none; half a line is none.
    bool ReadLine(std::string& line);
    // Without a chance to put anything in order. What it wrote so far can still be read.
    void Kill();
    // Its exit status; 128 and the signal's number for one that was killed.
    int Wait();

private:
    int m_Output;
    int m_Process; // 0 once it has been waited for
    std::string m_Unread;
};

} // namespace platform
