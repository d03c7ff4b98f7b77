// A table as a client gets it: made by its class identifier, used through its interfaces.
#pragma once

#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/dmudfcom/interface/TableRows.h"

#include "platform/com/activation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dmudfcom_tests {

using namespace IDM_dmudfcom;
using platform::CBstr;
using platform::CComPtr;
using platform::CVariant;

template <class Interface>
CComPtr<Interface> Make(REFCLSID clsid) {
    CComPtr<Interface> object;
    EXPECT_EQ(platform::CreateInstance(clsid, object), S_OK);
    return object;
}

inline CComPtr<IdmTable> MakeTable() { return Make<IdmTable>(CLSID_dmTable); }

inline CComPtr<IdmField> FieldOf(IdmTable& table, LONG id) {
    CComPtr<IdmField> field;
    EXPECT_EQ(table.get_FieldById(id, field.Put()), S_OK);
    return field;
}

inline CComPtr<IdmField> FieldOf(IdmTable& table, const wchar_t* name) {
    CComPtr<IdmField> field;
    EXPECT_EQ(table.get_FieldByName(CBstr(name).Get(), field.Put()), S_OK);
    return field;
}

// The value of a property that answers with S_OK.
template <class Interface>
LONG Get(Interface& object, HRESULT (Interface::*property)(LONG*)) {
    LONG value = -77;
    EXPECT_EQ((object.*property)(&value), S_OK);
    return value;
}

inline std::wstring TextOf(IdmField& field) {
    CBstr text;
    EXPECT_EQ(field.get_AsString(text.Put()), S_OK);
    EXPECT_FALSE(text.IsNull());
    return std::wstring(text.View());
}

inline LONG LongOf(IdmField& field) { return Get(field, &IdmField::get_AsLong); }

inline ULONG References(IUnknown& object) {
    object.AddRef();
    return object.Release();
}

class TableTest : public testing::Test {
protected:
    void AddField(const wchar_t* name, EColumnType type, ULONG size = 0) {
        ASSERT_EQ(m_Table->AddNewField(CBstr(name).Get(), static_cast<ULONG>(type), size), S_OK);
    }
    void AppendLong(IdmField& field, LONG value) {
        ASSERT_EQ(m_Table->Append(), S_OK);
        ASSERT_EQ(field.put_AsLong(value), S_OK);
        ASSERT_EQ(m_Table->Post(), S_OK);
    }
    std::vector<LONG> Walk(IdmField& field) {
        std::vector<LONG> values;
        EXPECT_EQ(m_Table->First(), S_OK);
        while (Get(*m_Table, &IdmTable::get_Eof) == 0) {
            values.push_back(LongOf(field));
            EXPECT_EQ(m_Table->Next(), S_OK);
        }
        return values;
    }

    CComPtr<IdmTable> m_Table = MakeTable();
    CComPtr<ITableRows> m_Rows = m_Table.As<ITableRows>();
};

} // namespace dmudfcom_tests
