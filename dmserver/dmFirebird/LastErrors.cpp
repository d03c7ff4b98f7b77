#include "LastErrors.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace IDM_dmFirebird {

namespace {

struct tagLastError {
    std::uint64_t Owner;
    std::wstring Text;
};

// A thread may outlive many databases; those that failed longest ago give way.
constexpr std::size_t KeptPerThread = 16;

std::vector<tagLastError>& OfThisThread() {
    thread_local std::vector<tagLastError> errors;
    return errors;
}

std::uint64_t NextOwner() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

} // namespace

CLastErrors::CLastErrors() : m_Owner(NextOwner()) {}

void CLastErrors::Remember(std::wstring text) const {
    std::vector<tagLastError>& errors = OfThisThread();
    std::erase_if(errors, [this](const tagLastError& error) { return error.Owner == m_Owner; });
    if (errors.size() == KeptPerThread)
        errors.erase(errors.begin());
    errors.push_back({m_Owner, std::move(text)});
}

std::wstring CLastErrors::Recall() const {
    for (const tagLastError& error : OfThisThread())
        if (error.Owner == m_Owner)
            return error.Text;
    return {};
}

} // namespace IDM_dmFirebird
