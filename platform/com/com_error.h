// The exception that carries a status code up to the guard at the interface, where it ends.
#pragma once

#include "platform/com/types.h"

#include <exception>
#include <string>

namespace platform {

class CComError : public std::exception {
public:
    explicit CComError(HRESULT code, std::wstring text = {});

    HRESULT Code() const noexcept { return m_Code; }
    const std::wstring& Text() const noexcept { return m_Text; }
    // "0x80004005: text", in UTF-8.
    const char* what() const noexcept override { return m_What.c_str(); }

private:
    HRESULT m_Code;
    std::wstring m_Text;
    std::string m_What;
};

// Inside a catch block: the status that stands for the exception at an interface, past which none may go.
HRESULT StatusOfException() noexcept;

[[noreturn]] void ThrowStatus(HRESULT code, std::wstring text = {});

inline void ThrowIfFailed(HRESULT code) {
    if (FAILED(code)) [[unlikely]]
        ThrowStatus(code);
}

} // namespace platform
