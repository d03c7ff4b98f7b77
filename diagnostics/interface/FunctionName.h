#pragma once
// The qualified name of a function out of what std::source_location::function_name() says of it: no return type, no
// arguments, no "[with T = int]". The result is a part of the given text, so nothing is copied. Code in a lambda
// counts to the function around it. What cannot be read comes back as it is.

#include <cstddef>
#include <string_view>

namespace BugSlayerUtil {

namespace detail {

inline constexpr std::string_view OperatorWord = "operator";

constexpr bool IsNamePart(char c) {
    return c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Is the word "operator" at this place, rather than a longer name that begins or ends like it?
constexpr bool IsOperatorAt(std::string_view text, std::size_t at) {
    return text.substr(at).starts_with(OperatorWord) && (at == 0 || !IsNamePart(text[at - 1])) &&
           !(at + OperatorWord.size() < text.size() && IsNamePart(text[at + OperatorWord.size()]));
}

// Behind the bracket that closes the one at `open`; the end of the text when none does.
constexpr std::size_t SkipBrackets(std::string_view text, std::size_t open) {
    int depth = 0;
    for (std::size_t i = open; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '(' || c == '<' || c == '{' || c == '[')
            ++depth;
        // The arrow of a trailing return type closes nothing.
        else if ((c == ')' || c == '>' || c == '}' || c == ']') && !(c == '>' && text[i - 1] == '-') &&
                 --depth == 0)
            return i + 1;
    }
    return text.size();
}

// From the end of the word "operator" to the argument list.
constexpr std::size_t SkipOperatorSign(std::string_view text, std::size_t at) {
    if (text.substr(at).starts_with("()"))
        at += 2;
    const std::size_t arguments = text.find('(', at);
    return arguments == text.npos ? text.size() : arguments;
}

} // namespace detail

constexpr std::string_view FunctionName(std::string_view signature) {
    const std::string_view text = signature.substr(0, signature.find(" [with "));
    std::size_t begin = 0;
    std::size_t i = 0;
    while (i < text.size()) {
        if (detail::IsOperatorAt(text, i)) {
            i = detail::SkipOperatorSign(text, i + detail::OperatorWord.size());
        } else if (text[i] == '(') {
            // "void (* name(int))(int)": a function that returns a pointer to one.
            if (i + 1 < text.size() && (text[i + 1] == '*' || text[i + 1] == '&')) {
                begin = i += 2;
                continue;
            }
            const std::size_t behind = detail::SkipBrackets(text, i);
            const std::string_view rest = text.substr(behind);
            const bool goesOn = rest.starts_with("::") && !rest.starts_with("::<lambda");
            // "f() const::Local::g()" goes on too.
            const bool constGoesOn = rest.starts_with(" const::") && !rest.starts_with(" const::<lambda");
            if (!goesOn && !constGoesOn)
                return text.substr(begin, i - begin);
            i = behind + (constGoesOn ? std::string_view(" const").size() : 0);
        } else if (text.substr(i).starts_with("::<lambda")) {
            return text.substr(begin, i - begin);
        } else if (text[i] == '<' || text[i] == '{' || text[i] == '[') {
            i = detail::SkipBrackets(text, i);
        } else {
            if (text[i] == ' ' || ((text[i] == '*' || text[i] == '&') && begin == i))
                begin = i + 1;
            ++i;
        }
    }
    return text.substr(begin);
}

} // namespace BugSlayerUtil
