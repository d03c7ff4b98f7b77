#pragma once
// A record of the debug library. It holds what it is told; only the root object acts.

#include "FieldList.h"
#include "diagnostics/interface/DebugObject.h"
#include "platform/com/object.h"

namespace DebugLog {

using IDM_BugSlayerUtil::IDebugObject;

class CRecord final
    : public platform::CObject<CRecord, platform::ECounter::Interlocked, platform::CDispatchImpl<IDebugObject>> {
public:
    HRESULT Command(IDebugObject** record, BSTR verb) override;
    HRESULT GetValue(BSTR name, VARIANT* value) override;
    HRESULT SetValue(BSTR name, VARIANT value) override;
    HRESULT SetOption(BSTR name, BSTR text, LONG flag) override;

    // Empty text, or 0, for a field that is missing or of another type.
    [[nodiscard]] std::wstring_view Text(BSTR name) const;
    [[nodiscard]] LONG Number(BSTR name) const;
    [[nodiscard]] double Real(BSTR name) const;
    [[nodiscard]] LONGLONG Number64(BSTR name) const;
    [[nodiscard]] bool Has(BSTR name) const { return m_Fields.Find(platform::ViewOf(name)) != nullptr; }
    // The error that this one wraps; null when there is none, or none of this library's making.
    [[nodiscard]] const CRecord* Inner() const;

private:
    CFieldList m_Fields;
};

} // namespace DebugLog
