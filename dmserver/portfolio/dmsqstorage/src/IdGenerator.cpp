#include "IdGenerator.h"

#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace sqStorage {

CIdGenerator::CIdGenerator(IDispatch* database) : COutputRequest(database) {
    const BugSlayerUtil::CScope scope(this);
    if (!Table())
        return;
    scope.Check(Table()->AddFieldById(IDM_dmudfcom::fieldGeneratedId, 0, 0, 0), L"AddFieldById");
    scope.Check(Table()->get_FieldById(IDM_dmudfcom::fieldGeneratedId, m_Field.Put()), L"FieldById");
}

LONG CIdGenerator::Generate() {
    const BugSlayerUtil::CScope scope(this);
    if (!Table())
        return 0;
    const std::lock_guard lock(m_Lock);
    Table()->Clear();
    Open(L"SELECT * FROM GENERATE_ID(1)", nullptr, Table());
    Fetch(0);
    Table()->First();
    LONG value = 0;
    if (scope.Assert(RecordCount() > 0, L"RecordCount>0") && m_Field)
        m_Field->get_AsLong(&value);
    Close();
    return value;
}

} // namespace sqStorage
