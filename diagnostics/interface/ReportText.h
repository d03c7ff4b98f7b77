#pragma once
// What a report is made of: a format or text together with the place in the source that gave it, and the arguments.
// All of it borrows: it lives as long as the call.

#include "platform/com/bstr.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <source_location>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace BugSlayerUtil {

// A printf format in wide text; null when there is nothing to say but the fields of the record.
class CFormat {
public:
    CFormat(const wchar_t* text, std::source_location place = std::source_location::current()) noexcept
        : m_Text(text), m_Place(place) {}

    [[nodiscard]] const wchar_t* Text() const noexcept { return m_Text; }
    [[nodiscard]] const std::source_location& Place() const noexcept { return m_Place; }

private:
    const wchar_t* m_Text;
    std::source_location m_Place;
};

// A text that is reported as it stands. Null is the empty text.
class CText {
public:
    CText(const wchar_t* text, std::source_location place = std::source_location::current()) noexcept
        : m_View(text ? std::wstring_view(text) : std::wstring_view()), m_Place(place) {}
    CText(const std::wstring& text, std::source_location place = std::source_location::current()) noexcept
        : m_View(text), m_Place(place) {}

    [[nodiscard]] std::wstring_view View() const noexcept { return m_View; }
    [[nodiscard]] const std::source_location& Place() const noexcept { return m_Place; }

private:
    std::wstring_view m_View;
    std::source_location m_Place;
};

// One argument of a format. A null text prints as "(null)"; narrow text is UTF-8.
class CArgument {
public:
    enum class EKind : std::uint8_t { Int, UInt, Int64, UInt64, Double, Character, Wide, Narrow, Pointer };

    template <class T>
    requires(std::integral<T> || std::is_enum_v<T>) CArgument(T value)
    noexcept {
        if constexpr (std::is_enum_v<T>) {
            *this = CArgument(static_cast<std::underlying_type_t<T>>(value));
        } else if constexpr (std::same_as<T, wchar_t> || std::same_as<T, char>) {
            m_Kind = EKind::Character;
            m_Int = static_cast<std::int64_t>(value);
        } else if constexpr (std::is_signed_v<T>) {
            m_Kind = sizeof(T) <= sizeof(std::int32_t) ? EKind::Int : EKind::Int64;
            m_Int = static_cast<std::int64_t>(value);
        } else {
            m_Kind = sizeof(T) <= sizeof(std::uint32_t) ? EKind::UInt : EKind::UInt64;
            m_UInt = static_cast<std::uint64_t>(value);
        }
    }
    CArgument(double value) noexcept : m_Kind(EKind::Double), m_Double(value) {}
    CArgument(const wchar_t* text) noexcept : m_Kind(EKind::Wide), m_Wide(text ? std::wstring_view(text) : Null) {}
    CArgument(std::nullptr_t) noexcept : m_Kind(EKind::Wide), m_Wide(Null) {}
    CArgument(std::wstring_view text) noexcept : m_Kind(EKind::Wide), m_Wide(text) {}
    CArgument(const std::wstring& text) noexcept : m_Kind(EKind::Wide), m_Wide(text) {}
    CArgument(const platform::CBstr& text) noexcept
        : m_Kind(EKind::Wide), m_Wide(text.IsNull() ? Null : text.View()) {}
    CArgument(const char* text) noexcept
        : m_Kind(EKind::Narrow), m_Narrow(text ? std::string_view(text) : "(null)") {}
    CArgument(const std::string& text) noexcept : m_Kind(EKind::Narrow), m_Narrow(text) {}
    CArgument(std::string_view text) noexcept : m_Kind(EKind::Narrow), m_Narrow(text) {}
    template <class T>
    requires(!std::same_as<std::remove_cv_t<T>, wchar_t> && !std::same_as<std::remove_cv_t<T>, char>)
        CArgument(T* pointer)
    noexcept : m_Kind(EKind::Pointer), m_Pointer(pointer) {}

    [[nodiscard]] EKind Kind() const noexcept { return m_Kind; }
    [[nodiscard]] std::int64_t Int() const noexcept { return m_Int; }
    [[nodiscard]] std::uint64_t UInt() const noexcept { return m_UInt; }
    [[nodiscard]] double Double() const noexcept { return m_Double; }
    [[nodiscard]] std::wstring_view Wide() const noexcept { return m_Wide; }
    [[nodiscard]] std::string_view Narrow() const noexcept { return m_Narrow; }
    [[nodiscard]] const void* Pointer() const noexcept { return m_Pointer; }

private:
    static constexpr std::wstring_view Null = L"(null)";

    EKind m_Kind;
    union {
        std::int64_t m_Int;
        std::uint64_t m_UInt;
        double m_Double;
        std::wstring_view m_Wide;
        std::string_view m_Narrow;
        const void* m_Pointer;
    };
};

// The format with its arguments. A format that does not suit them comes back as it stands, with a remark behind it:
// a report never fails its caller.
[[nodiscard]] std::wstring FormatReport(const wchar_t* format, std::span<const CArgument> arguments);

} // namespace BugSlayerUtil
