#pragma once
// The exact text of the range error that a call raises.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

// "none" when nothing is raised; another exception fails the test.
template <class Call>
std::string RangeErrorText(Call&& call) {
    try {
        call();
    } catch (const std::range_error& error) {
        return error.what();
    }
    return "none";
}
