#include "diagnostics/interface/Trail.h"

#include "Failures.h"
#include "ToWide.h"
#include "WithoutException.h"
#include "diagnostics/interface/BugSlayerClient.h"
#include "diagnostics/interface/RecordNames.h"
#include "platform/last_error.h"

#include <deque>
#include <fmt/printf.h>
#include <fmt/xchar.h>
#include <memory>
#include <mutex>

namespace BugSlayerUtil {

namespace {

constexpr std::size_t MaxFailures = 64;

struct tagFailures {
    std::mutex Lock;
    std::deque<std::wstring> Texts; // guarded by Lock
};

tagFailures& Failures() {
    static tagFailures& failures = *std::make_unique<tagFailures>().release();
    return failures;
}

} // namespace

void NoteFailure(std::string_view function, std::wstring_view text, std::optional<HRESULT> status) noexcept {
    const platform::CLastErrorKeeper keeper;
    WithoutException([&] {
        std::wstring entry = ToWide(function);
        entry.append(L": ").append(text);
        if (status)
            entry += fmt::sprintf(L" (0x%08X)", static_cast<unsigned>(*status));
        tagFailures& failures = Failures();
        const std::lock_guard lock(failures.Lock);
        if (failures.Texts.size() == MaxFailures)
            failures.Texts.pop_front();
        failures.Texts.push_back(std::move(entry));
        return S_OK;
    });
}

std::vector<std::wstring> RecentFailures() {
    tagFailures& failures = Failures();
    const std::lock_guard lock(failures.Lock);
    return {failures.Texts.begin(), failures.Texts.end()};
}

void ClearRecentFailures() {
    tagFailures& failures = Failures();
    const std::lock_guard lock(failures.Lock);
    failures.Texts.clear();
}

std::wstring LogFilePath() {
    BugSlayerClient& client = GetClient();
    const auto object = client.Ready() ? client.Object.Get() : nullptr;
    platform::CVariant path;
    const HRESULT status =
        WithoutException([&] { return object ? object->GetValue(Name::LogFile.Get(), path.Put()) : E_FAIL; });
    return status == S_OK ? path.AsText() : std::wstring();
}

} // namespace BugSlayerUtil
