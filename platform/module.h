#pragma once
// Shared libraries that are found by name while the program runs.
//
// Names are Windows names: "X.dll" (in any case), or just "X", is the shared library "libX.so"; a name that ends in
// ".so" or has a version behind it stands as it is, and so does a path, which is a name with a "/" in it.
//
// A module stays loaded until the process ends, whatever becomes of its CModule: code and type tables of it may be
// in use where nobody counts them. Failures are not remembered: the next call looks again. Any thread may call.

#include <optional>
#include <string>
#include <string_view>

namespace platform {

class CModule {
public:
    // Only what the process has already; nothing is loaded.
    [[nodiscard]] static std::optional<CModule> FindLoaded(std::wstring_view windowsName);
    // Looks among the loaded modules, in the folders of SQSTORAGE_MODULE_PATH (":" between them), beside this
    // library, beside the executable, then where the system's loader looks. The first file found decides: if it
    // cannot be loaded, the result is empty. `reason`, when given, then receives the loader's own words.
    [[nodiscard]] static std::optional<CModule> Load(std::wstring_view nameOrPath, std::wstring* reason = nullptr);
    // The module whose code or data lies there; std::invalid_argument when the address is in none.
    [[nodiscard]] static CModule ContainingAddress(const void* address);
    [[nodiscard]] static CModule Executable();

    CModule(CModule&& other) noexcept;
    CModule& operator=(CModule&& other) noexcept;
    CModule(const CModule&) = delete;
    CModule& operator=(const CModule&) = delete;
    ~CModule() = default;

    // Null when the module does not offer it.
    [[nodiscard]] void* Symbol(const char* name) const;
    // The full path.
    [[nodiscard]] std::wstring FileName() const;
    // What the system's loader calls it; for the files of this component.
    [[nodiscard]] void* NativeHandle() const noexcept { return m_Handle; }

private:
    explicit CModule(void* handle) noexcept : m_Handle(handle) {}

    void* m_Handle;
};

} // namespace platform
