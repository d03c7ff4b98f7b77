// What a command takes, without the parser of the command line: that one costs a file that includes it more than
// all the rest, and only this one's source and CommandLine.cpp do.
//
//     const auto arguments = std::make_shared<tagWeekArguments>();
//     CCommandOptions command(program, "week", "Draw the trading week of an exchange", Manual);
//     command.Argument("EXCHANGE", arguments->Exchange, "The exchange's name");
//     command.Does(chosen, [arguments](const CConsole& console) { return Week(*arguments, console); });
//
// The values that it is given are written when the line is parsed, and what the command does must keep them until
// then. A value that is not on the line stays as it is.
#pragma once

#include "Command.h"

#include <optional>
#include <string>
#include <vector>

namespace sqCli {

// One of the words, which are separated by '|', as an option of the program or of a command.
void AddChoice(CLI::App& app, const char* name, std::string& value, const std::string& words, const char* help);

class CCommandOptions {
public:
    // The manual stands below the options in the command's help.
    CCommandOptions(CLI::App& program, const char* name, const char* summary, const std::string& manual);

    // By its place; must be there.
    void Argument(const char* name, std::string& value, const std::string& help);
    // One or more.
    void Arguments(const char* name, std::vector<std::string>& values, const char* help);

    void Flag(const char* name, bool& value, const char* help);
    // The placeholder stands for the value in the help.
    void Option(const char* name, std::string& value, const char* placeholder, const char* help);
    void Option(const char* name, std::optional<std::string>& value, const char* placeholder, const char* help);
    void RequiredOption(const char* name, std::string& value, const char* placeholder, const char* help);
    // May be repeated.
    void Options(const char* name, std::vector<std::string>& values, const char* placeholder, const char* help);
    // As AddChoice.
    void Choice(const char* name, std::string& value, const std::string& words, const char* help);

    // What is chosen when the line names the command.
    void Does(Action& chosen, Action action);

private:
    CLI::App& m_Command;
};

} // namespace sqCli
