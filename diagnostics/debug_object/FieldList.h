#pragma once
// The fields of a record: named values in the order in which they were first written.

#include "platform/com/variant.h"

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <string_view>
#include <vector>

namespace DebugLog {

class CFieldList {
public:
    struct tagField {
        [[nodiscard]] std::wstring_view Name() const { return {Characters.data(), Characters.size()}; }

        // The names in use fit without an allocation.
        boost::container::small_vector<wchar_t, 24> Characters;
        platform::CVariant Value;
    };

    CFieldList() { m_Fields.reserve(16); }

    // A field that exists keeps its place.
    HRESULT Set(std::wstring_view name, const VARIANT& value) {
        const auto found = std::ranges::find(m_Fields, name, &tagField::Name);
        if (found != m_Fields.end())
            return VariantCopy(&found->Value.Get(), &value);
        tagField field;
        const HRESULT status = VariantCopy(&field.Value.Get(), &value);
        if (FAILED(status))
            return status;
        field.Characters.assign(name.begin(), name.end());
        m_Fields.push_back(std::move(field));
        return S_OK;
    }
    // Null when it was never written.
    [[nodiscard]] const VARIANT* Find(std::wstring_view name) const {
        const auto found = std::ranges::find(m_Fields, name, &tagField::Name);
        return found == m_Fields.end() ? nullptr : &found->Value.Get();
    }
    [[nodiscard]] const std::vector<tagField>& All() const { return m_Fields; }

private:
    std::vector<tagField> m_Fields;
};

} // namespace DebugLog
