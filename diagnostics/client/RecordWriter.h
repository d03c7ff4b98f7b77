#pragma once
// Makes one record and hands it to the debug library. Every step answers; after the first answer that is not 0,
// which is the record's code, the rest is left out. A library that throws has answered E_FAIL.

#include "diagnostics/interface/BugSlayerClient.h"
#include "diagnostics/interface/RecordNames.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace BugSlayerUtil {

// A text laid out as a BSTR, with its length in front, in memory that the next text uses again: no field costs an
// allocation.
class CScratchText {
public:
    CScratchText() { m_Bytes.reserve(512); }

    // Valid until the next call.
    [[nodiscard]] BSTR Hold(std::wstring_view text);

private:
    std::vector<std::byte> m_Bytes;
};

class CRecordWriter {
public:
    // "CREATE", with `$Type` as the first field; null for the start record, which has none.
    CRecordWriter(IDebugObject* root, const wchar_t* type);

    void Text(BSTR name, std::wstring_view value);
    void Utf8(BSTR name, std::string_view value);
    void Number(BSTR name, LONG value);
    void Number64(BSTR name, LONGLONG value);
    void Real(BSTR name, double value);
    void Flag(BSTR name, bool value);
    void Pointer(BSTR name, const void* value);
    void Object(BSTR name, IDebugObject* value);

    void Filter() { Send(Verb::Filter.Get()); }
    void Init() { Send(Verb::Init.Get()); }
    // "PROCESS"; then the pointer into the stack, if the record has one, is taken out of it.
    HRESULT Process();

    [[nodiscard]] HRESULT Code() const noexcept { return m_Code; }
    // Null when "CREATE" failed; the record may have been stopped on its way.
    [[nodiscard]] platform::CComPtr<IDebugObject> Detach() noexcept { return std::move(m_Record); }

private:
    void Set(BSTR name, const VARIANT& value);
    void Send(BSTR verb);

    IDebugObject* m_Root;
    platform::CComPtr<IDebugObject> m_Record;
    HRESULT m_Code = S_OK;
    bool m_HasPointers = false; // in the record, not merely offered to it
    CScratchText m_Scratch;
};

} // namespace BugSlayerUtil
