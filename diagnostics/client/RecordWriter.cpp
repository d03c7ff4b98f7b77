#include "RecordWriter.h"

#include "ToWide.h"

namespace BugSlayerUtil {

static_assert(sizeof(wchar_t) == sizeof(ULONG), "the length of a text takes the place of one character before it");

CRecordWriter::CRecordWriter(IDebugObject* root, const wchar_t* type) : m_Root(root) {
    m_Code = root ? root->Command(m_Record.Put(), Verb::Create.Get()) : E_FAIL;
    if (m_Code == S_OK && !m_Record)
        m_Code = E_FAIL;
    m_Scratch.reserve(128);
    if (type)
        Text(Name::Type.Get(), type);
}

void CRecordWriter::Set(BSTR name, const VARIANT& value) {
    if (m_Code == S_OK)
        m_Code = m_Record->SetValue(name, value);
}

void CRecordWriter::Send(BSTR verb) {
    if (m_Code != S_OK)
        return;
    // The library may put another record in its place.
    IDebugObject* record = m_Record.Detach();
    m_Code = m_Root->Command(&record, verb);
    m_Record.Attach(record);
}

void CRecordWriter::Text(BSTR name, std::wstring_view value) {
    m_Scratch.assign(1, static_cast<wchar_t>(value.size() * sizeof(wchar_t)));
    m_Scratch.append(value);
    VARIANT variant{};
    variant.vt = VT_BSTR;
    variant.bstrVal = m_Scratch.data() + 1;
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
    if (name == Name::ExceptionPointers.Get())
        m_HasPointers = true;
    Number64(name, static_cast<LONGLONG>(reinterpret_cast<std::intptr_t>(value)));
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
