#include "dmTable.h"

#include "CarrierText.h"
#include "FieldMap.h"
#include "Guarded.h"
#include "TableBytes.h"

#include <algorithm>
#include <limits>

namespace IDM_dmudfcom {

namespace {

HRESULT Tell(LONG* target, LONG value) {
    if (!target)
        return E_POINTER;
    *target = value;
    return S_OK;
}

tagField MakeField(const tagFieldInfo& info) {
    tagField field;
    field.Id = info.Id;
    field.Name = info.Name;
    field.Type = info.Type;
    field.Size = info.Size;
    return field;
}

} // namespace

CdmTable::CdmTable() : m_Store(std::make_shared<CTableStore>()), m_Cursor(m_Store) {}

CdmTable::CdmTable(tagTableContent content)
    : m_Id(content.Id), m_Contents(content.Contents), m_Store(std::move(content.Store)), m_Cursor(m_Store) {}

CdmTable::~CdmTable() = default;

HRESULT CdmTable::get_Id(LONG* Value) { return Tell(Value, m_Id); }
HRESULT CdmTable::get_Contents(LONG* Value) { return Tell(Value, m_Contents); }
HRESULT CdmTable::get_FieldCount(LONG* Value) { return Tell(Value, static_cast<LONG>(m_Store->FieldCount())); }
HRESULT CdmTable::get_RecordCount(LONG* Value) { return Tell(Value, static_cast<LONG>(m_Store->RecordCount())); }
HRESULT CdmTable::get_Eof(LONG* Value) { return Tell(Value, m_Cursor.IsEof()); }
HRESULT CdmTable::get_Bof(LONG* Value) { return Tell(Value, m_Cursor.IsBof()); }

HRESULT CdmTable::put_Id(LONG Value) {
    m_Id = Value;
    return S_OK;
}

HRESULT CdmTable::put_Contents(LONG Value) {
    m_Contents = Value;
    return S_OK;
}

// Fields

IdmField* CdmTable::FieldObject(ULONG field) {
    if (m_FieldObjects.size() < m_Store->FieldCount())
        m_FieldObjects.resize(m_Store->FieldCount());
    if (!m_FieldObjects[field])
        BindObjects(); // another table may have added the field to the shared store
    if (!m_FieldObjects[field]) {
        m_Fields.push_back(std::make_unique<CdmField>(*this, field));
        m_FieldObjects[field] = m_Fields.back().get();
    }
    return m_FieldObjects[field];
}

// A field object that lost its field finds it again when a field of its id and name comes.
void CdmTable::BindObjects() {
    m_FieldObjects.assign(m_Store->FieldCount(), nullptr);
    for (const auto& object : m_Fields) {
        object->Rebind();
        if (object->Index() != NoField)
            m_FieldObjects[object->Index()] = object.get();
    }
}

HRESULT CdmTable::GiveField(ULONG field, IdmField** target) {
    *target = nullptr;
    return Guarded([&]() -> HRESULT {
        if (field != NoField) {
            *target = FieldObject(field);
            (*target)->AddRef();
        }
        return S_OK;
    });
}

HRESULT CdmTable::get_Field(LONG Index, IdmField** Value) {
    if (!Value)
        return E_POINTER;
    *Value = nullptr;
    if (Index < 0 || static_cast<ULONG>(Index) >= m_Store->FieldCount())
        return E_INVALIDARG;
    return GiveField(static_cast<ULONG>(Index), Value);
}

HRESULT CdmTable::get_FieldById(LONG FieldId, IdmField** Value) {
    return Value ? GiveField(m_Store->FindField(FieldId), Value) : E_POINTER;
}

HRESULT CdmTable::get_FieldByName(BSTR FieldName, IdmField** Value) {
    if (!Value)
        return E_POINTER;
    *Value = nullptr;
    return Guarded([&] {
        const auto name = ToStored(platform::ViewOf(FieldName));
        return GiveField(name ? m_Store->FindField(*name) : NoField, Value);
    });
}

HRESULT CdmTable::AddMapped(const tagFieldInfo* info, LONG baseCode, LONG hasStatus, LONG status) {
    if (!info)
        return E_INVALIDARG;
    if (m_Store->FindField(info->Id) != NoField)
        return S_FALSE;
    tagField field = MakeField(*info);
    field.BaseCode = baseCode;
    field.HasStatus = hasStatus;
    field.Status = status;
    m_Store->AddField(std::move(field));
    BindObjects();
    return S_OK;
}

HRESULT CdmTable::AddFieldById(LONG FieldId, LONG BaseCode, LONG HasStatus, LONG Status) {
    return Guarded([&] { return AddMapped(FindField(FieldId), BaseCode, HasStatus, Status); });
}

HRESULT CdmTable::AddFieldByName(BSTR FieldName, LONG BaseCode, LONG HasStatus, LONG Status) {
    return Guarded([&] {
        const auto name = ToStored(platform::ViewOf(FieldName));
        return AddMapped(name ? FindField(*name) : nullptr, BaseCode, HasStatus, Status);
    });
}

LONG CdmTable::FreeId(std::string_view name) const {
    LONG id = UnmappedFieldId(name);
    while (m_Store->FindField(id) != NoField)
        id = id == std::numeric_limits<LONG>::max() ? FirstUnmappedField : id + 1;
    return id;
}

HRESULT CdmTable::AddNewField(BSTR Name, ULONG FieldType, ULONG FieldSize) {
    return Guarded([&]() -> HRESULT {
        const auto name = ToStored(platform::ViewOf(Name));
        if (!name || name->empty() || !IsColumnType(FieldType))
            return E_INVALIDARG;
        const auto type = static_cast<EColumnType>(FieldType);
        if (const ULONG existing = m_Store->FindField(*name); existing != NoField)
            return m_Store->Field(existing).Type == type ? S_FALSE : E_INVALIDARG;
        const tagFieldInfo* info = FindField(*name);
        tagField field;
        field.Id = info ? info->Id : FreeId(*name);
        field.Name = *name;
        field.Type = type;
        field.Size = type == EColumnType::Text ? FieldSize : 0;
        m_Store->AddField(std::move(field));
        BindObjects();
        return S_OK;
    });
}

// Records

HRESULT CdmTable::PostAt(ULONG position) {
    const Row row = m_Appended.Detach();
    if (row == NoRow)
        return S_FALSE;
    m_Store->Post(row, position);
    m_Cursor.MoveToRow(row);
    return S_OK;
}

// A move ends the giving of a key and puts a record being appended among the others.
void CdmTable::FinishEdit() {
    m_Key.IsCollecting = false;
    PostAt(m_Store->RecordCount());
}

template <class Step>
HRESULT CdmTable::Move(Step step) {
    return Guarded([&]() -> HRESULT {
        FinishEdit();
        (m_Cursor.*step)();
        return S_OK;
    });
}

HRESULT CdmTable::First() { return Move(&CRecordCursor::First); }
HRESULT CdmTable::Last() { return Move(&CRecordCursor::Last); }
HRESULT CdmTable::Prev() { return Move(&CRecordCursor::Prev); }
HRESULT CdmTable::Next() { return Move(&CRecordCursor::Next); }

HRESULT CdmTable::Clear() {
    return Guarded([&]() -> HRESULT {
        m_Key = {};
        m_Appended.Reset();
        m_BulkRow = NoRow;
        m_Store->Clear();
        m_Cursor.First();
        return S_OK;
    });
}

HRESULT CdmTable::Append() {
    return Guarded([&]() -> HRESULT {
        if (m_Store->FieldCount() == 0)
            return E_FAIL;
        FinishEdit();
        m_Appended = CReservedRow(m_Store);
        return S_OK;
    });
}

HRESULT CdmTable::Post() {
    return Guarded([&] { return PostAt(m_Store->RecordCount()); });
}

HRESULT CdmTable::PostTo(LONG Position) {
    return Guarded([&]() -> HRESULT {
        if (!m_Appended)
            return E_FAIL;
        if (Position < 0 || static_cast<ULONG>(Position) > m_Store->RecordCount())
            return E_INVALIDARG;
        return PostAt(static_cast<ULONG>(Position));
    });
}

HRESULT CdmTable::Cancel() {
    return Guarded([&]() -> HRESULT {
        const bool wasEditing = m_Appended || m_Key.IsCollecting;
        m_Key.IsCollecting = false;
        m_Appended.Reset();
        return wasEditing ? S_OK : S_FALSE;
    });
}

HRESULT CdmTable::Delete() {
    if (m_Appended)
        return Cancel();
    return Guarded([&]() -> HRESULT {
        m_Key.IsCollecting = false;
        const Row row = m_Cursor.Current();
        if (row == NoRow)
            return E_FAIL;
        m_Store->Delete(m_Store->PositionOf(row));
        m_Cursor.Current(); // on to the next one before the row is used again
        return S_OK;
    });
}

Row CdmTable::RowToRead() {
    if (m_Key.IsCollecting)
        return m_Key.Values.Get();
    if (const Row row = m_Appended.Get(); row != NoRow)
        return row;
    return m_Cursor.Current();
}

HRESULT CdmTable::RowToWrite(ULONG field, Row& row) {
    row = field == NoField ? NoRow : RowToRead();
    if (row == NoRow)
        return E_FAIL;
    if (!m_Key.IsCollecting)
        return S_OK;
    const CTableIndex* index = m_Cursor.Index();
    if (!index || !index->HasField(field))
        return E_INVALIDARG;
    const auto place = std::ranges::find(index->Fields(), field) - index->Fields().begin();
    m_Key.Given[static_cast<std::size_t>(place)] = true;
    return S_OK;
}

// What the table shows

void CdmTable::Show(std::shared_ptr<CTableStore> store) {
    m_Key = {};
    m_Appended.Reset();
    m_BulkRow = NoRow;
    m_Store = std::move(store);
    m_Cursor = CRecordCursor(m_Store);
    BindObjects();
}

HRESULT CdmTable::Attach(IdmTable* Table) {
    if (!Table)
        return E_POINTER;
    return Guarded([&]() -> HRESULT {
        platform::CComPtr<IStoreOwner> own;
        if (SUCCEEDED(Table->QueryInterface(platform::UuidOf<IStoreOwner>, own.PutVoid()))) {
            if (own->Store() != m_Store)
                Show(own->Store());
            return S_OK;
        }
        platform::CVariant bytes;
        const HRESULT status = Table->get_AsVariant(bytes.Put());
        return FAILED(status) ? status : ShowBytes(bytes.Get());
    });
}

HRESULT CdmTable::get_AsVariant(VARIANT* Value) {
    if (!Value)
        return E_POINTER;
    VariantInit(Value);
    return Guarded([&] { return GiveBytes(WriteTable(*m_Store, m_Id, m_Contents), *Value); });
}

HRESULT CdmTable::put_AsVariant(VARIANT Value) {
    return Guarded([&] { return ShowBytes(Value); });
}

HRESULT CdmTable::ShowBytes(const VARIANT& value) {
    const auto bytes = TakeBytes(value);
    auto content = bytes ? ReadTable(*bytes) : std::nullopt;
    if (!content)
        return E_FAIL;
    m_Id = content->Id;
    m_Contents = content->Contents;
    Show(std::move(content->Store));
    return S_OK;
}

} // namespace IDM_dmudfcom
