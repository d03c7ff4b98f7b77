// Runs a program and keeps what it said.
#pragma once

#include <filesystem>
#include <string>
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

// With both streams on a terminal of its own; everything is in Output.
tagEnd RunInTerminal(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const Environment& environment);

} // namespace sqCliTest
