#include "Record.h"

#include "diagnostics/interface/RecordNames.h"

#include <new>

namespace DebugLog {

HRESULT CRecord::Command(IDebugObject**, BSTR) { return E_NOTIMPL; }

HRESULT CRecord::SetOption(BSTR, BSTR, LONG) { return E_NOTIMPL; }

HRESULT CRecord::GetValue(BSTR name, VARIANT* value) {
    if (!value)
        return E_POINTER;
    if (const VARIANT* found = m_Fields.Find(platform::ViewOf(name)))
        return VariantCopy(value, found);
    VariantClear(value);
    return S_FALSE;
}

HRESULT CRecord::SetValue(BSTR name, VARIANT value) {
    try {
        return m_Fields.Set(platform::ViewOf(name), value);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

std::wstring_view CRecord::Text(BSTR name) const {
    const VARIANT* value = m_Fields.Find(platform::ViewOf(name));
    return value && value->vt == VT_BSTR ? platform::ViewOf(value->bstrVal) : std::wstring_view();
}

LONG CRecord::Number(BSTR name) const {
    const VARIANT* value = m_Fields.Find(platform::ViewOf(name));
    return value && value->vt == VT_I4 ? value->lVal : 0;
}

double CRecord::Real(BSTR name) const {
    const VARIANT* value = m_Fields.Find(platform::ViewOf(name));
    return value && value->vt == VT_R8 ? value->dblVal : 0;
}

LONGLONG CRecord::Number64(BSTR name) const {
    const VARIANT* value = m_Fields.Find(platform::ViewOf(name));
    return value && value->vt == VT_I8 ? value->llVal : 0;
}

const CRecord* CRecord::Inner() const {
    const VARIANT* value = m_Fields.Find(platform::ViewOf(BugSlayerUtil::Name::Inner.Get()));
    return value && value->vt == VT_DISPATCH ? dynamic_cast<const CRecord*>(value->pdispVal) : nullptr;
}

} // namespace DebugLog
