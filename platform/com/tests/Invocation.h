// One late-bound call put together as a script host does it.
#pragma once

#include "platform/com/dispatch.h"

#include <deque>
#include <utility>
#include <vector>

namespace platform::tests {

class CInvocation {
public:
    static constexpr UINT NotSet = 999;

    // In the order of the parameters. A named value stays the caller's, a temporary one is kept here.
    CInvocation& Add(const CVariant& value) { return Add(value.Get()); }
    CInvocation& Add(CVariant&& value) { return Add(Keep(std::move(value))); }
    CInvocation& Add(const VARIANT& value) {
        m_Positional.push_back(value);
        return *this;
    }
    CInvocation& AddNamed(DISPID parameter, const CVariant& value) {
        m_Names.push_back(parameter);
        m_Named.push_back(value.Get());
        return *this;
    }
    CInvocation& AddNamed(DISPID parameter, CVariant&& value) {
        return AddNamed(parameter, std::as_const(m_Kept.emplace_back(std::move(value))));
    }
    template <class T>
    CInvocation& AddReference(VARTYPE type, T* place) {
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(VT_BYREF | type);
        value.byref = place;
        return Add(value);
    }
    CInvocation& AddMissing() {
        VARIANT value{};
        value.vt = VT_ERROR;
        value.scode = DISP_E_PARAMNOTFOUND;
        return Add(value);
    }
    CInvocation& WithoutResult() {
        m_WantsResult = false;
        return *this;
    }

    HRESULT Run(IDispatch* object, DISPID id, WORD flags = DISPATCH_METHOD) {
        std::vector<VARIANT> arguments = m_Named;
        arguments.insert(arguments.end(), m_Positional.rbegin(), m_Positional.rend());
        DISPPARAMS parameters{arguments.data(), m_Names.data(), static_cast<UINT>(arguments.size()),
                              static_cast<UINT>(m_Names.size())};
        Bad = NotSet;
        return object->Invoke(id, NullGuid, 0, flags, &parameters, m_WantsResult ? Result.Put() : nullptr, nullptr,
                              &Bad);
    }

    UINT Bad = NotSet;
    CVariant Result;

private:
    const VARIANT& Keep(CVariant&& value) { return m_Kept.emplace_back(std::move(value)).Get(); }

    std::deque<CVariant> m_Kept;
    std::vector<DISPID> m_Names;
    std::vector<VARIANT> m_Named;
    std::vector<VARIANT> m_Positional;
    bool m_WantsResult = true;
};

// Identifiers of IThing's methods.
enum EThing : DISPID {
    Id_Add = 1,
    Id_Text,
    Id_Notify,
    Id_Swap,
    Id_Echo,
    Id_Register,
    Id_AttachPart,
    Id_GetPart,
    Id_GetPlain,
    Id_List,
    Id_Answer,
    Id_Carry,
    Id_Multiply,
    Id_Nothing,
    Id_SplitName = 60
};

} // namespace platform::tests
