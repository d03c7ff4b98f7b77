// Runs a program and keeps what it said. A program ends with the thread that started it at the latest.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace sqCliTest {

struct tagEnd {
    int Status; // exit status; 128 and the signal's number for one that was killed
    std::string Output;
    std::string Errors;
};

// "NAME=value" for each variable of the new environment.
using Environment = std::vector<std::string>;

// With both streams into files of `folder`.
tagEnd RunProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const Environment& environment, const std::filesystem::path& folder);

// The standard output goes to that file and is not read back: Output is empty.
tagEnd RunProgramInto(const std::filesystem::path& output, const std::filesystem::path& program,
                      const std::vector<std::string>& arguments, const Environment& environment,
                      const std::filesystem::path& folder);

// Nobody reads the standard output, from the start on.
tagEnd RunProgramUnread(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                        const Environment& environment, const std::filesystem::path& folder);

// With both streams on a terminal of its own; everything is in Output.
tagEnd RunInTerminal(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const Environment& environment);

// A program that goes on until it is told to end. What it says is read as it comes; it is killed with this object.
class CRunningProgram {
public:
    CRunningProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    const Environment& environment);
    ~CRunningProgram();
    CRunningProgram(const CRunningProgram&) = delete;
    CRunningProgram& operator=(const CRunningProgram&) = delete;

    // Returns once the text stands in what it said on the standard error stream. False when it ended before.
    bool AwaitError(std::string_view text);
    // Reads that much of its standard output, and leaves the rest in the pipe, which holds 64 KB: one that has more
    // to say than that waits. False when it ended before.
    bool AwaitOutput(std::size_t bytes);
    // The most that it has had in memory so far, in bytes. It has not ended.
    [[nodiscard]] std::size_t PeakMemory() const;
    // Nobody reads the rest.
    void CloseOutput();
    void Signal(int signal) const;
    // Returns once it uses no processor. False when it has used a second of it before that.
    [[nodiscard]] bool AwaitRest() const;
    tagEnd Wait();

private:
    int m_Output; // -1 once it is closed
    int m_ErrorStream;
    std::string m_Said;
    std::string m_Errors;
    int m_Process; // 0 once it has been waited for
};

} // namespace sqCliTest
