// Prints what the host executable knows of itself: company, product, language and code page; or the error.
#include "platform/text.h"
#include "platform/version_info.h"

#include <cstdio>
#include <exception>

int main() try {
    const auto block = platform::ReadVersionBlock(nullptr);
    if (!block) {
        std::puts("none");
        return 1;
    }
    std::printf("%s|%s|%04x%04x\n", platform::ToUtf8(block->Value(L"CompanyName").value_or(L"-")).c_str(),
                platform::ToUtf8(block->Value(L"ProductName").value_or(L"-")).c_str(), unsigned{block->Language()},
                unsigned{block->CodePage()});
    return 0;
} catch (const std::exception& error) {
    std::printf("error: %s\n", error.what());
    return 2;
}
