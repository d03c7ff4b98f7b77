#include "diagnostics/interface/FunctionName.h"

#include <gtest/gtest.h>
#include <source_location>
#include <string>
#include <vector>

namespace {

using BugSlayerUtil::FunctionName;

// Known while compiling, so that nothing is spent on it when the program runs.
static_assert(FunctionName("void sqStorage::f(int)") == "sqStorage::f");

struct tagCase {
    const char* Signature;
    const char* Name;
};

class FunctionNameOf : public testing::TestWithParam<tagCase> {};

TEST_P(FunctionNameOf, LeavesOutResultAndArguments) {
    EXPECT_EQ(FunctionName(GetParam().Signature), GetParam().Name);
}

INSTANTIATE_TEST_SUITE_P(
    Signatures, FunctionNameOf,
    testing::Values(tagCase{"virtual HRESULT sqStorage::CStorage::InsertHoliday(const wchar_t*, LONG*)",
                            "sqStorage::CStorage::InsertHoliday"},
                    tagCase{"void sqStorage::free1(int, const std::string&)", "sqStorage::free1"},
                    tagCase{"sqStorage::CStorage::CStorage()", "sqStorage::CStorage::CStorage"},
                    tagCase{"sqStorage::CStorage::~CStorage()", "sqStorage::CStorage::~CStorage"},
                    tagCase{"virtual sqStorage::CStorage::~CStorage()", "sqStorage::CStorage::~CStorage"},
                    tagCase{"T sqStorage::tmpl(T) [with T = std::__cxx11::basic_string<char>]", "sqStorage::tmpl"},
                    tagCase{
                        "static U sqStorage::C<T, N>::g(U) [with U = long int; T = std::map<int, int>; int N = 3]",
                        "sqStorage::C<T, N>::g"},
                    tagCase{"sqStorage::C<T, N>::In::In() [with T = int; int N = 3]", "sqStorage::C<T, N>::In::In"},
                    tagCase{"void {anonymous}::anon()", "{anonymous}::anon"},
                    tagCase{"void sqStorage::{anonymous}::anon()", "sqStorage::{anonymous}::anon"},
                    tagCase{"const std::vector<int>& sqStorage::retref()", "sqStorage::retref"},
                    tagCase{"std::map<int, void (*)(int)> sqStorage::S::mm(void (*)(int))", "sqStorage::S::mm"},
                    tagCase{"void (* sqStorage::S::rf(int))(int)", "sqStorage::S::rf"},
                    tagCase{"int main(int, char**)", "main"}, tagCase{"int cfun()", "cfun"},
                    tagCase{"virtual long int sqStorage::S::noex() &&", "sqStorage::S::noex"}));

INSTANTIATE_TEST_SUITE_P(
    Operators, FunctionNameOf,
    testing::Values(tagCase{"sqStorage::S::operator bool() const", "sqStorage::S::operator bool"},
                    tagCase{"sqStorage::S::operator std::vector<int>() const",
                            "sqStorage::S::operator std::vector<int>"},
                    tagCase{"int sqStorage::S::operator()(int) const", "sqStorage::S::operator()"},
                    tagCase{"bool sqStorage::S::operator<(const sqStorage::S&) const", "sqStorage::S::operator<"},
                    tagCase{"bool sqStorage::S::operator>(int)", "sqStorage::S::operator>"},
                    tagCase{"sqStorage::S& sqStorage::S::operator<<(int)", "sqStorage::S::operator<<"},
                    tagCase{"sqStorage::S* sqStorage::S::operator->()", "sqStorage::S::operator->"},
                    tagCase{"void sqStorage::operator+(S, int)", "sqStorage::operator+"},
                    tagCase{"void sqStorage::set_operator(int)", "sqStorage::set_operator"},
                    tagCase{"void sqStorage::operatorName(int)", "sqStorage::operatorName"}));

INSTANTIATE_TEST_SUITE_P(
    LambdasAndLocalClasses, FunctionNameOf,
    testing::Values(tagCase{"sqStorage::L::q()::<lambda(auto:11)>::<lambda()>", "sqStorage::L::q"},
                    tagCase{"sqStorage::L::q() const::<lambda()>", "sqStorage::L::q"},
                    tagCase{"sqStorage::<lambda(int)>", "sqStorage"},
                    tagCase{"void sqStorage::L::q()::Loc::f()", "sqStorage::L::q()::Loc::f"},
                    tagCase{"void sqStorage::L::q() const::Loc::f()", "sqStorage::L::q() const::Loc::f"}));

INSTANTIATE_TEST_SUITE_P(Damaged, FunctionNameOf,
                         testing::Values(tagCase{"", ""}, tagCase{"f", "f"}, tagCase{"f(", "f"}, tagCase{"(", ""},
                                         tagCase{"a<b", "a<b"}, tagCase{"operator", "operator"},
                                         tagCase{">>>>", ">>>>"}, tagCase{"void f(int", "f"}));

namespace sample {
template <class T>
struct CThing {
    std::string Run() const { return std::string(FunctionName(std::source_location::current().function_name())); }
};
} // namespace sample

TEST(FunctionNameOfTheCompiler, IsTheQualifiedName) {
    EXPECT_EQ(sample::CThing<std::vector<int>>().Run(), "{anonymous}::sample::CThing<T>::Run");
}

} // namespace
