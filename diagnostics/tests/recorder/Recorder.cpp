#include "Recorder.h"

#include "../../debug_object/FieldList.h"
#include "diagnostics/interface/DebugObject.h"
#include "diagnostics/interface/RecordNames.h"
#include "platform/com/activation.h"

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <new>

namespace Recorder {

namespace {

namespace Name = BugSlayerUtil::Name;
namespace Verb = BugSlayerUtil::Verb;
namespace RecordType = BugSlayerUtil::RecordType;
using IDM_BugSlayerUtil::IDebugLevel;
using IDM_BugSlayerUtil::IDebugObject;
using platform::ViewOf;

std::atomic<int> g_OpenRecords{0};
std::atomic<int> g_OpenRoots{0};

// Where a record stands in the list once it was submitted.
constexpr std::size_t NotSubmitted = static_cast<std::size_t>(-1);

struct tagState {
    std::mutex Lock; // guards all of it
    std::vector<tagRecord> Records;
    std::vector<tagRecord> Starts;
    std::vector<tagRecord> GivenUp;
    std::vector<std::wstring> Verbs;
    std::vector<tagOption> Options;
    int Generation = 0; // grows at each Clear
    std::map<std::wstring, HRESULT, std::less<>> Answers;
    std::map<std::wstring, HRESULT, std::less<>> FieldAnswers;
    std::map<std::wstring, std::wstring, std::less<>> RootValues;
    HRESULT OptionAnswer = S_OK;
    HRESULT InitObjectAnswer = S_OK;
    bool GivesObject = true;
    std::function<void()> InitObjectHandler;
    std::function<HRESULT(const tagRecord&)> Handler;
    std::function<void(std::wstring_view)> VerbHandler;
    std::optional<std::vector<LONG>> Unwanted;
};

// The client lets go of the library after the static objects of a test may be gone.
tagState& State() {
    static tagState& state = *std::make_unique<tagState>().release();
    return state;
}

std::wstring TextOf(const VARIANT* value) {
    return value && value->vt == VT_BSTR ? std::wstring(ViewOf(value->bstrVal)) : std::wstring();
}

LONG NumberOf(const VARIANT* value) { return value && value->vt == VT_I4 ? value->lVal : 0; }

platform::CVariant CopyOf(const VARIANT& value) {
    platform::CVariant copy;
    VariantCopy(copy.Put(), &value);
    return copy;
}

class CRecord final
    : public platform::CObject<CRecord, platform::ECounter::Interlocked, platform::CDispatchImpl<IDebugObject>> {
public:
    CRecord() { ++g_OpenRecords; }
    ~CRecord() {
        if (m_Place == NotSubmitted)
            KeepGivenUp();
        --g_OpenRecords;
    }

    HRESULT Command(IDebugObject**, BSTR) override { return E_NOTIMPL; }
    HRESULT SetOption(BSTR, BSTR, LONG) override { return E_NOTIMPL; }
    HRESULT GetValue(BSTR name, VARIANT* value) override {
        const VARIANT* found = m_Fields.Find(ViewOf(name));
        return found ? VariantCopy(value, found) : (VariantClear(value), S_FALSE);
    }
    HRESULT SetValue(BSTR name, VARIANT value) override {
        tagState& state = State();
        const std::lock_guard lock(state.Lock);
        if (m_Place != NotSubmitted && m_Generation == state.Generation)
            state.Records[m_Place].FieldsAfterProcess.emplace_back(ViewOf(name), CopyOf(value));
        const auto answer = state.FieldAnswers.find(ViewOf(name));
        return answer == state.FieldAnswers.end() ? m_Fields.Set(ViewOf(name), value) : answer->second;
    }

    [[nodiscard]] tagRecord Snapshot() const {
        tagRecord record;
        for (const auto& field : m_Fields.All())
            if (field.Name() != ViewOf(Name::Inner.Get()))
                record.Fields.emplace_back(field.Name(), field.Value);
        record.Type = TextOf(Find(Name::Type.Get()));
        record.Ident = NumberOf(Find(Name::Ident.Get()));
        record.Message = TextOf(Find(Name::Message.Get()));
        record.Function = TextOf(Find(Name::Function.Get()));
        record.Description = TextOf(Find(Name::Description.Get()));
        if (const VARIANT* status = Find(Name::Status.Get()))
            record.Status = NumberOf(status);
        record.Group = NumberOf(Find(Name::Group.Get()));
        record.Line = NumberOf(Find(Name::Line.Get()));
        const VARIANT* inner = Find(Name::Inner.Get());
        if (const auto* wrapped = inner ? dynamic_cast<const CRecord*>(inner->pdispVal) : nullptr)
            record.Inner.push_back(wrapped->Snapshot());
        return record;
    }
    // Under the state's lock.
    void SetPlace(std::size_t place, int generation) {
        m_Place = place;
        m_Generation = generation;
    }

private:
    void KeepGivenUp() const noexcept {
        try {
            tagRecord snapshot = Snapshot();
            tagState& state = State();
            const std::lock_guard lock(state.Lock);
            state.GivenUp.push_back(std::move(snapshot));
        } catch (const std::bad_alloc&) {
            // A test without memory does not ask for it.
        }
    }
    [[nodiscard]] const VARIANT* Find(BSTR name) const { return m_Fields.Find(ViewOf(name)); }

    DebugLog::CFieldList m_Fields;
    std::size_t m_Place = NotSubmitted;
    int m_Generation = 0;
};

// What is wrong with the pointer that came with the verb; empty when nothing is.
std::wstring_view RemarkOn(IDebugObject** record, std::wstring_view verb) {
    const bool takesRecord = verb == ViewOf(Verb::Filter.Get()) || verb == ViewOf(Verb::Process.Get()) ||
                             verb == ViewOf(Verb::Init.Get());
    const bool hasRecord = record && *record;
    if (takesRecord != hasRecord)
        return hasRecord ? L" with a record" : L" without a record";
    return record ? std::wstring_view() : L" without a pointer";
}

HRESULT AnswerTo(tagState& state, std::wstring_view verb) {
    const auto found = state.Answers.find(verb);
    return found == state.Answers.end() ? S_OK : found->second;
}

class CRoot final : public platform::CObject<CRoot, platform::ECounter::Interlocked,
                                             platform::CDispatchImpl<IDebugObject>, IDebugLevel> {
public:
    CRoot() { ++g_OpenRoots; }
    ~CRoot() { --g_OpenRoots; }

    HRESULT QueryInterface(REFIID iid, void** object) override {
        tagState& state = State();
        const std::lock_guard lock(state.Lock);
        if (iid == platform::UuidOf<IDebugLevel> && !state.Unwanted) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        return CObject::QueryInterface(iid, object);
    }
    HRESULT IsWanted(LONG ident) override {
        tagState& state = State();
        const std::lock_guard lock(state.Lock);
        return state.Unwanted && std::ranges::find(*state.Unwanted, ident) != state.Unwanted->end() ? S_FALSE
                                                                                                    : S_OK;
    }

    HRESULT Command(IDebugObject** record, BSTR verbText) override {
        const std::wstring verb(ViewOf(verbText));
        HRESULT answer = S_OK;
        std::function<void(std::wstring_view)> handler;
        {
            tagState& state = State();
            const std::lock_guard lock(state.Lock);
            state.Verbs.push_back(verb + std::wstring(RemarkOn(record, verb)));
            answer = AnswerTo(state, verb);
            handler = state.VerbHandler;
        }
        if (handler)
            handler(verb);
        if (verb == ViewOf(Verb::Create.Get()) && answer == S_OK)
            *record = platform::MakeObject<CRecord>().Detach();
        else if (verb == ViewOf(Verb::Init.Get()))
            KeepStart(*record);
        else if (verb == ViewOf(Verb::Process.Get()))
            answer = KeepRecord(*record, answer);
        return answer;
    }
    HRESULT GetValue(BSTR name, VARIANT* value) override {
        tagState& state = State();
        const std::lock_guard lock(state.Lock);
        const auto found = state.RootValues.find(ViewOf(name));
        platform::CVariant text;
        if (found != state.RootValues.end())
            text = platform::CVariant(std::wstring_view(found->second));
        VariantCopy(value, &text.Get());
        return found == state.RootValues.end() ? S_FALSE : S_OK;
    }
    HRESULT SetValue(BSTR, VARIANT) override { return E_NOTIMPL; }
    HRESULT SetOption(BSTR name, BSTR text, LONG flag) override {
        tagState& state = State();
        const std::lock_guard lock(state.Lock);
        state.Options.push_back({std::wstring(ViewOf(name)), std::wstring(ViewOf(text)), flag});
        return state.OptionAnswer;
    }

private:
    static void KeepStart(IDebugObject* object) {
        tagState& state = State();
        const std::lock_guard lock(state.Lock);
        if (const auto* record = dynamic_cast<const CRecord*>(object))
            state.Starts.push_back(record->Snapshot());
    }
    static HRESULT KeepRecord(IDebugObject* object, HRESULT answer) {
        auto* const record = dynamic_cast<CRecord*>(object);
        if (!record)
            return E_INVALIDARG;
        const tagRecord snapshot = record->Snapshot();
        std::function<HRESULT(const tagRecord&)> handler;
        {
            tagState& state = State();
            const std::lock_guard lock(state.Lock);
            state.Records.push_back(snapshot);
            record->SetPlace(state.Records.size() - 1, state.Generation);
            handler = state.Handler;
        }
        // Without the lock: the handler may ask the recorder.
        const HRESULT handled = handler ? handler(snapshot) : S_OK;
        return handled == S_OK ? answer : handled;
    }
};

void CollectDescriptions(const tagRecord& record, std::wstring& text) {
    if (!record.Description.empty())
        text += (text.empty() ? L"" : L": ") + record.Description;
    for (const tagRecord& inner : record.Inner)
        CollectDescriptions(inner, text);
}

HRESULT GiveRoot(IDebugObject** object) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    if (state.InitObjectHandler)
        state.InitObjectHandler();
    *object = state.GivesObject ? platform::MakeObject<CRoot>().Detach() : nullptr;
    return state.InitObjectAnswer;
}

constexpr std::array ClassTable{
    platform::tagClassEntry{IDM_BugSlayerUtil::DebugObjectClass, &platform::CreatePlain<CRoot>}};

const platform::CModuleClasses Classes(ClassTable);

} // namespace

std::vector<std::wstring> tagRecord::FieldNames() const {
    std::vector<std::wstring> names;
    for (const Field& field : Fields)
        names.push_back(field.first);
    return names;
}

platform::CVariant tagRecord::Value(std::wstring_view name) const {
    const auto found = std::ranges::find(Fields, name, &Field::first);
    return found == Fields.end() ? platform::CVariant() : found->second;
}

void Clear() {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.Records.clear();
    state.Starts.clear();
    state.GivenUp.clear();
    state.Verbs.clear();
    state.Options.clear();
    ++state.Generation;
}

void Reset() {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.Answers.clear();
    state.FieldAnswers.clear();
    state.RootValues.clear();
    state.OptionAnswer = S_OK;
    state.InitObjectAnswer = S_OK;
    state.GivesObject = true;
    state.InitObjectHandler = nullptr;
    state.Handler = nullptr;
    state.VerbHandler = nullptr;
    state.Unwanted.reset();
}

std::vector<tagRecord> Records() {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    return state.Records;
}

std::vector<tagRecord> RecordsOf(std::wstring_view type) {
    std::vector<tagRecord> records = Records();
    std::erase_if(records, [&](const tagRecord& record) { return record.Type != type; });
    return records;
}

std::vector<tagRecord> GivenUp() {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    return state.GivenUp;
}

std::vector<std::wstring> Messages() {
    std::vector<std::wstring> messages;
    for (const tagRecord& record : RecordsOf(RecordType::Trace))
        if (record.Ident == 0)
            messages.push_back(record.Message);
    return messages;
}

std::vector<std::wstring> Asserts() {
    std::vector<std::wstring> descriptions;
    for (const tagRecord& record : RecordsOf(RecordType::Assert))
        descriptions.push_back(record.Description);
    return descriptions;
}

std::vector<std::wstring> Errors() {
    std::vector<std::wstring> errors;
    for (const tagRecord& record : RecordsOf(RecordType::Error))
        CollectDescriptions(record, errors.emplace_back());
    return errors;
}

std::vector<tagRecord> Starts() {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    return state.Starts;
}

std::vector<std::wstring> Verbs() {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    return state.Verbs;
}

std::vector<tagOption> Options() {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    return state.Options;
}

void SetAnswer(std::wstring_view verb, HRESULT code) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.Answers.insert_or_assign(std::wstring(verb), code);
}

void SetOptionAnswer(HRESULT code) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.OptionAnswer = code;
}

void SetInitObject(HRESULT code, bool givesObject) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.InitObjectAnswer = code;
    state.GivesObject = givesObject;
}

void SetInitObjectHandler(std::function<void()> handler) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.InitObjectHandler = std::move(handler);
}

void SetFieldAnswer(std::wstring_view name, HRESULT code) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.FieldAnswers.insert_or_assign(std::wstring(name), code);
}

void SetProcessHandler(std::function<HRESULT(const tagRecord&)> handler) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.Handler = std::move(handler);
}

void SetVerbHandler(std::function<void(std::wstring_view)> handler) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.VerbHandler = std::move(handler);
}

void SetUnwanted(std::vector<LONG> idents) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.Unwanted = std::move(idents);
}

void SetRootValue(std::wstring_view name, std::wstring_view text) {
    tagState& state = State();
    const std::lock_guard lock(state.Lock);
    state.RootValues.insert_or_assign(std::wstring(name), std::wstring(text));
}

int OpenRecords() { return g_OpenRecords; }

int OpenRoots() { return g_OpenRoots; }

bool Raises(const std::function<void()>& call) {
    try {
        call();
    } catch (IDM_BugSlayerUtil::IDebugObject* error) {
        error->Release();
        return true;
    }
    return false;
}

} // namespace Recorder

extern "C" HRESULT BS_InitObject(IDM_BugSlayerUtil::IDebugObject** object) { return Recorder::GiveRoot(object); }

extern "C" HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return Recorder::Classes.GetClassObject(clsid, iid, object);
}
