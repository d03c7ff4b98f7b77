#include "RecordWriter.h"

#include "ToWide.h"
#include "WithoutException.h"

#include <cstring>

namespace BugSlayerUtil {

static_assert(sizeof(ULONG) % alignof(wchar_t) == 0, "characters stand right behind the length");

BSTR CScratchText::Hold(std::wstring_view text) {
    const std::size_t size = text.size() * sizeof(wchar_t);
    // With the closing zero.
    m_Bytes.resize(sizeof(ULONG) + size + sizeof(wchar_t));
    const auto length = static_cast<ULONG>(size);
    std::memcpy(m_Bytes.data(), &length, sizeof length);
    std::byte* const characters = m_Bytes.data() + sizeof length;
    if (size != 0)
        std::memcpy(characters, text.data(), size);
    std::memset(characters + size, 0, sizeof(wchar_t));
    return reinterpret_cast<BSTR>(characters);
}

CRecordWriter::CRecordWriter(IDebugObject* root, const wchar_t* type) : m_Root(root) {
    m_Code = root ? WithoutException([&] { return root->Command(m_Record.Put(), Verb::Create.Get()); }) : E_FAIL;
    if (m_Code == S_OK && !m_Record)
        m_Code = E_FAIL;
    if (type)
        Text(Name::Type.Get(), type);
}

void CRecordWriter::Set(BSTR name, const VARIANT& value) {
    if (m_Code == S_OK)
        m_Code = WithoutException([&] { return m_Record->SetValue(name, value); });
}

void CRecordWriter::Send(BSTR verb) {
    if (m_Code != S_OK)
        return;
    // The library may put another record in its place.
    IDebugObject* record = m_Record.Detach();
    m_Code = WithoutException([&] { return m_Root->Command(&record, verb); });
    m_Record.Attach(record);
}

void CRecordWriter::Text(BSTR name, std::wstring_view value) {
    VARIANT variant{};
    variant.vt = VT_BSTR;
    variant.bstrVal = m_Scratch.Hold(value);
    Set(name, variant);
}

void CRecordWriter::Utf8(BSTR name, std::string_view value) { Text(name, ToWide(value)); }

void CRecordWriter::Number(BSTR name, LONG value) {
    VARIANT variant{};
    variant.vt = VT_I4;
    variant.lVal = value;
    Set(name, variant);
}

void CRecordWriter::Number64(BSTR name, LONGLONG value) {
    VARIANT variant{};
    variant.vt = VT_I8;
    variant.llVal = value;
    Set(name, variant);
}

void CRecordWriter::Real(BSTR name, double value) {
    VARIANT variant{};
    variant.vt = VT_R8;
    variant.dblVal = value;
    Set(name, variant);
}

void CRecordWriter::Flag(BSTR name, bool value) {
    VARIANT variant{};
    variant.vt = VT_BOOL;
    variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    Set(name, variant);
}

void CRecordWriter::Pointer(BSTR name, const void* value) {
    Number64(name, static_cast<LONGLONG>(reinterpret_cast<std::intptr_t>(value)));
    if (name == Name::ExceptionPointers.Get() && m_Code == S_OK)
        m_HasPointers = true;
}

void CRecordWriter::Object(BSTR name, IDebugObject* value) {
    VARIANT variant{};
    variant.vt = VT_DISPATCH;
    variant.pdispVal = value;
    Set(name, variant);
}

HRESULT CRecordWriter::Process() {
    Send(Verb::Process.Get());
    const HRESULT code = m_Code;
    if (m_HasPointers && m_Record) {
        m_Code = S_OK;
        Number64(Name::ExceptionPointers.Get(), 0);
        m_Code = code;
    }
    m_Record.Reset();
    return code;
}

} // namespace BugSlayerUtil
