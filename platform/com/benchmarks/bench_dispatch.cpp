// What a late-bound call costs beside the direct one. The callee does nothing, so what is left is the road to it.
//
// Each pair is measured in the same run. The counter `above_direct_ns` is the time that Invoke takes on top of the
// direct call; it is to stay below one microsecond.
#include "platform/com/dispatch.h"
#include "platform/com/object.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <vector>

namespace {

using namespace platform;

struct ICallee : IDispatch {
    virtual HRESULT Lookup(LONG Mode, LONG First, LONG Second, LONG* Found) = 0;
    virtual HRESULT Insert(LONG P1, LONG P2, BSTR P3, BSTR P4, LONG P5, LONG P6, BSTR P7, BSTR P8, LONG P9,
                           LONG P10, double P11, double P12, LONG P13, LONG P14, BSTR P15, BSTR P16, LONG P17,
                           LONG P18, BSTR P19, LONG P20, LONG P21, LONG P22, LONG P23, LONG* P24) = 0;

protected:
    ~ICallee() = default;
};

} // namespace

template <>
struct platform::InterfaceTraits<ICallee> {
    static constexpr GUID Uuid = MakeGuid("5b4e2c10-4444-4c6a-9d0e-7a3a51f0aa01");
    using Base = IDispatch;
};
template <>
struct platform::DispatchTable<ICallee> {
    static constexpr std::array Methods{
        Method<&ICallee::Lookup>(1, L"Lookup", L"Mode", L"First", L"Second", L"Found"),
        Method<&ICallee::Insert>(2, L"Insert", L"P1", L"P2", L"P3", L"P4", L"P5", L"P6", L"P7", L"P8", L"P9",
                                 L"P10", L"P11", L"P12", L"P13", L"P14", L"P15", L"P16", L"P17", L"P18", L"P19",
                                 L"P20", L"P21", L"P22", L"P23", L"P24")};
};

namespace {

class CCallee final : public CObject<CCallee, ECounter::Plain, CDispatchImpl<ICallee>> {
public:
    HRESULT Lookup(LONG, LONG, LONG, LONG* Found) override {
        *Found = 1;
        return S_OK;
    }
    HRESULT Insert(LONG, LONG, BSTR, BSTR, LONG, LONG, BSTR, BSTR, LONG, LONG, double, double, LONG, LONG, BSTR,
                   BSTR, LONG, LONG, BSTR, LONG, LONG, LONG, LONG, LONG* Id) override {
        *Id = 1;
        return S_OK;
    }
};

// Keeps the compiler from seeing which class stands behind the interface.
ICallee* Hide(ICallee* object) {
    benchmark::DoNotOptimize(object);
    return object;
}

HRESULT LookupDirectly(ICallee* object, LONG* found) { return object->Lookup(1, 2, 3, found); }

HRESULT InsertDirectly(ICallee* object, LONG* id) {
    static const CBstr text(L"text");
    return object->Insert(1, 2, text.Get(), text.Get(), 5, 6, text.Get(), text.Get(), 9, 10, 11.5, 12.5, 13, 14,
                          text.Get(), text.Get(), 17, 18, text.Get(), 20, 21, 22, 23, id);
}

// Arguments as a script host passes them, last one first.
class CArguments {
public:
    explicit CArguments(std::vector<CVariant> values, LONG* out) : m_Values(std::move(values)) {
        VARIANT reference{};
        reference.vt = VT_BYREF | VT_I4;
        reference.plVal = out;
        m_Reversed.push_back(reference);
        for (auto value = m_Values.rbegin(); value != m_Values.rend(); ++value)
            m_Reversed.push_back(value->Get());
        m_Parameters = {m_Reversed.data(), nullptr, static_cast<UINT>(m_Reversed.size()), 0};
    }
    DISPPARAMS* Get() { return &m_Parameters; }

private:
    std::vector<CVariant> m_Values;
    std::vector<VARIANT> m_Reversed;
    DISPPARAMS m_Parameters{};
};

std::vector<CVariant> LookupValues() { return {CVariant(LONG{1}), CVariant(LONG{2}), CVariant(LONG{3})}; }

// `convert`: numbers come as text and the other way round, so that every argument is converted.
std::vector<CVariant> InsertValues(bool convert) {
    constexpr std::string_view kinds = "nnttnnttnnddnnttnntnnnn"; // number, text, double
    std::vector<CVariant> values;
    for (const char kind : kinds) {
        if (kind == 't')
            values.push_back(convert ? CVariant(LONG{12345}) : CVariant(L"text"));
        else if (convert)
            values.emplace_back(L"12345");
        else
            values.push_back(kind == 'n' ? CVariant(LONG{1}) : CVariant(1.5));
    }
    return values;
}

template <class Function>
double NanosecondsOf(Function function) {
    constexpr int rounds = 200000;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < rounds; ++i)
        function();
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / rounds;
}

template <class Direct>
void Measure(benchmark::State& state, DISPID id, std::vector<CVariant> values, Direct direct) {
    const auto callee = MakeObject<CCallee>();
    ICallee* const object = Hide(callee.Get());
    LONG out = 0;
    CArguments arguments(std::move(values), &out);
    const auto invoke = [&] {
        const HRESULT status =
            object->Invoke(id, NullGuid, 0, DISPATCH_METHOD, arguments.Get(), nullptr, nullptr, nullptr);
        benchmark::DoNotOptimize(status);
        return status;
    };
    if (invoke() != S_OK)
        return state.SkipWithError("the call is refused");
    const double directly = NanosecondsOf([&] { benchmark::DoNotOptimize(direct(object, &out)); });
    const double invoked = NanosecondsOf(invoke);
    for ([[maybe_unused]] auto _ : state)
        invoke();
    state.counters["direct_ns"] = directly;
    state.counters["invoke_ns"] = invoked;
    state.counters["above_direct_ns"] = invoked - directly;
}

void BM_FourArguments(benchmark::State& state) { Measure(state, 1, LookupValues(), LookupDirectly); }
void BM_TwentyFourArguments(benchmark::State& state) { Measure(state, 2, InsertValues(false), InsertDirectly); }
void BM_TwentyFourArgumentsAllConverted(benchmark::State& state) {
    Measure(state, 2, InsertValues(true), InsertDirectly);
}

BENCHMARK(BM_FourArguments);
BENCHMARK(BM_TwentyFourArguments);
BENCHMARK(BM_TwentyFourArgumentsAllConverted);

} // namespace

BENCHMARK_MAIN();
