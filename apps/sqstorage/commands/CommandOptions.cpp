#include "CommandOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <sstream>
#include <utility>

namespace sqCli {

void AddChoice(CLI::App& app, const char* name, std::string& value, const std::string& words, const char* help) {
    std::vector<std::string> known;
    std::istringstream text(words);
    for (std::string word; std::getline(text, word, '|');)
        known.push_back(word);
    const auto problem = [known](const std::string& word) {
        return std::ranges::find(known, word) != known.end()
                   ? std::string()
                   : fmt::format("\"{}\" is none of {}", word, fmt::join(known, ", "));
    };
    app.add_option(name, value, help)->type_name(words)->check(problem);
}

CCommandOptions::CCommandOptions(CLI::App& program, const char* name, const char* summary,
                                 const std::string& manual)
    : m_Command(*program.add_subcommand(name, summary)) {
    m_Command.footer(manual);
}

void CCommandOptions::Argument(const char* name, std::string& value, const std::string& help) {
    m_Command.add_option(name, value, help)->required();
}

void CCommandOptions::Arguments(const char* name, std::vector<std::string>& values, const char* help) {
    m_Command.add_option(name, values, help)->required();
}

void CCommandOptions::Flag(const char* name, bool& value, const char* help) {
    m_Command.add_flag(name, value, help);
}

void CCommandOptions::Option(const char* name, std::string& value, const char* placeholder, const char* help) {
    m_Command.add_option(name, value, help)->type_name(placeholder);
}

void CCommandOptions::Option(const char* name, std::optional<std::string>& value, const char* placeholder,
                             const char* help) {
    m_Command.add_option(name, value, help)->type_name(placeholder);
}

void CCommandOptions::RequiredOption(const char* name, std::string& value, const char* placeholder,
                                     const char* help) {
    m_Command.add_option(name, value, help)->type_name(placeholder)->required();
}

void CCommandOptions::Options(const char* name, std::vector<std::string>& values, const char* placeholder,
                              const char* help) {
    m_Command.add_option(name, values, help)
        ->type_name(placeholder)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void CCommandOptions::Choice(const char* name, std::string& value, const std::string& words, const char* help) {
    AddChoice(m_Command, name, value, words, help);
}

void CCommandOptions::Does(Action& chosen, Action action) {
    m_Command.callback([&chosen, action = std::move(action)] { chosen = action; });
}

} // namespace sqCli
